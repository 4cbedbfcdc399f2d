#include <gtest/gtest.h>

#include "tests/data/table_files.h"

namespace {

std::vector<CString> tableNames(OpenConnection& connection) {
  std::vector<CString> names;
  const auto schema = connection.OpenSchema(adSchemaTables, L"ignored", 1);
  for (; const _adoFields* row = schema->CurrentRow(); schema->MoveNext()) {
    names.push_back(row->GetTableProperty(L"TABLE_NAME")->value.text());
    EXPECT_EQ(row->GetTableProperty(L"TABLE_TYPE")->value.text(), CString(L"TABLE"));
  }
  return names;
}

TEST(Open, AnswersZeroForAtLeastOneTable) {
  TableFolder folder;
  OpenConnection connection;
  EXPECT_EQ(connection.Open(folder.text(), L"", L"", 0), 1);
  EXPECT_EQ(connection.OpenSchema(adSchemaTables, {}, {})->GetadoEOF(), -1);
  EXPECT_FALSE(connection.run(L"select * from T"));
  EXPECT_EQ(connection.Open(folder.text() + L"\\none", L"", L"", 0), 1);

  folder.schema("Flat Washer", "Flat_x0020_Washer", {"d1:real", "d2:real"});
  folder.schema("bolt", "BOLT", {"d"});
  folder.schema("Wrong name", "Other", {"d"});
  folder.write("Broken.xsd", "<a><b></a>");
  folder.write("Empty.xsd", "");
  folder.write("NoSequence.xsd", "<s><e name='NoSequence'><complexType/></e></s>");
  folder.write("NoFields.xsd", "<s><e name='NoFields'><complexType><sequence/></complexType></e></s>");
  folder.write("Case.xsd",
               "<s><e name='Case'><ComplexType><sequence><e name='A'/></sequence></ComplexType></e></s>");
  folder.write("notes.txt", "x");
  std::filesystem::create_directory(folder.path() / "folder.xsd");
  EXPECT_EQ(connection.Open(folder.text(), L"u", L"p", 7), 0);
  const std::vector<CString> wanted = {L"bolt", L"Flat Washer"};
  EXPECT_EQ(tableNames(connection), wanted);
  EXPECT_EQ(connection.OpenSchema(adSchemaTables, {}, {})->GetadoEOF(), 0);
  EXPECT_EQ(connection.Close(), 1);
  EXPECT_EQ(printed(connection.run(L"select * from bolt")), "empty\n") << "a schema without its data file";
}

TEST(Schema, FieldsAreReadInOrderWithTheirAttributes) {
  TableFolder folder;
  folder.write(
      "A B.xsd",
      "<?xml version='1.0' encoding='GB2312'?><x:schema><!-- \xB1\xED --><x:element name='a_x0020_b'>"
      "<other/><x:complexType><!-- no field --><y:sequence><!-- \xD7\xA2 -->"
      "<x:element name='\xB3\xA4\xB6\xC8' minOccurs='0' od:jetType='double' od:sqlSType='float'/>text"
      "<x:element sqlSType='int' name='n'/><x:element od:sqlSType='int'/><x:any name='last'/>"
      "</y:sequence></x:complexType></x:element>"
      "<x:element name='A_x0020_B'/></x:schema>");
  OpenConnection connection;
  _Tables table;
  ASSERT_EQ(connection.ReadTableInfo(folder.text() + L"\\A B.xsd", table), 1);
  EXPECT_EQ(table.name.text(), CString(L"A B"));
  ASSERT_EQ(table.fields.size(), 4u);
  EXPECT_EQ(table.fields[0].name, CString(L"长度"));
  EXPECT_EQ(table.fields[0].minOccurs, CString(L"0"));
  EXPECT_EQ(table.fields[0].jetType, CString(L"double"));
  EXPECT_EQ(table.fields[0].sqlType, CString(L"float"));
  EXPECT_TRUE(table.fields[1].sqlType.IsEmpty()) << "the attribute is named with its prefix";
  EXPECT_TRUE(table.fields[2].name.IsEmpty());
  EXPECT_EQ(connection.ReadTableInfo(folder.text() + L"\\none.xsd", table), 0);

  ASSERT_EQ(connection.Open(folder.text(), L"", L"", 0), 0);
  EXPECT_EQ(connection.FieldType(L"长度", L"a b"), CString(L"float"));
  EXPECT_TRUE(connection.FieldType(L"none", L"A B").IsEmpty());
  EXPECT_TRUE(connection.FieldType(L"n", L"none").IsEmpty());
  folder.write("A B.xml", "<dataroot><A_x0020_B><n>1</n></A_x0020_B></dataroot>");
  EXPECT_EQ(printed(connection.run(L"select * from [A B]")), "|1|\n") << "a field without a name has no item";
}

/// The same rows once in the plain form of an export and once in a form that needs the tree.
TEST(Data, BothWaysOfReadingGiveTheSame) {
  struct Case {
    const char* what;
    std::string rows;
    std::string wanted;
  };
  const Case cases[] = {
      {"order of fields is the schema's", "<T><b>2</b><a>1</a></T><T><a>3</a><b>4</b></T>", "1|2|\n3|4|\n"},
      {"missing is the empty text, empty is null", "<T><a></a></T><T><a/><c>x</c></T>", "NULL||\nNULL||x\n"},
      {"white space alone is nothing", "<T><a> \r\n </a><b>&#32;</b></T>", "NULL| |\n"},
      {"names without case", "<T><A>1</A></T>", "1||\n"},
      {"names by case in one row: the first", "<T><A>1</A><a>2</a></T>", "1||\n"},
      {"names by case in two rows", "<T><A>1</A></T><T><a>2</a><A>3</A></T>", "1||\n2||\n"},
      {"twice the same", "<T><a>1</a><a>2</a></T>", "1||\n"},
      {"other rows", "<U><a>1</a></U><T><a>2</a></T><U/><t><a>3</a></t>", "2||\n"},
      {"references and line ends", "<T><a>&lt;&amp;&#x4e2d;&#10;</a><b>x\r\ny\rz</b></T>",
       "<&中\n|x\ny\nz|\n"},
      {"chinese", "<T><a>六角头螺栓</a></T>", "六角头螺栓||\n"},
      {"beyond the basic plane", "<T><a>𠮷</a></T>", "𠮷||\n"},
      {"a comment before the text is the value", "<T><a><!--note-->1</a></T>", "note||\n"},
      {"a comment behind the text isn't", "<T><a>1<!--note--></a></T>", "1||\n"},
      {"text, comment, text: the first", "<T><a>1<!--n-->2</a></T>", "1||\n"},
      {"character data", "<T><a><![CDATA[<1>]]></a></T>", "<1>||\n"},
      {"an element inside", "<T><a><x>1</x></a></T>", "NULL||\n"},
      {"text, then an element", "<T><a>1<x>2</x></a></T>", "1||\n"},
      {"a name with a prefix isn't the field", "<T><x:a>1</x:a></T>", "||\n"},
      {"text between fields", "<T>x<a>1</a>y</T>", "1||\n"},
      {"attributes", "<T k='1'><a k='2'>1</a></T>", "1||\n"},
      {"no fields", "<T/><T></T>", "||\n||\n"},
      {"blanks in end tags", "<T ><a >1</a ></T\n>", "1||\n"},
      {"long text", "<T><a>" + std::string(100000, 'x') + "</a></T>", std::string(100000, 'x') + "||\n"},
  };
  for (const Case& item : cases) {
    TableFolder folder;
    folder.schema("T", "T", {"a", "b", "c"});
    folder.rows("T", item.rows);
    folder.schema("Tree", "T", {"a", "b", "c"});
    OpenConnection connection;
    ASSERT_EQ(connection.Open(folder.text(), L"", L"", 0), 0);
    EXPECT_EQ(printed(connection.run(L"select * from T")), item.wanted) << item.what;
    OpenConnection tree;
    folder.rows("T", "<!-- -->" + item.rows);
    ASSERT_EQ(tree.Open(folder.text(), L"", L"", 0), 0);
    EXPECT_EQ(printed(tree.run(L"select * from T")), item.wanted) << item.what << " (tree)";
  }
}

TEST(Data, WrongFilesGiveNoRows) {
  const std::string cases[] = {
      "",
      "<dataroot>",
      "<dataroot/>",
      "<other><T><a>1</a></T></other>",
      "<x><dataroot><T><a>1</a></T></dataroot></x>",
      "<dataroot><T><a>1</a></dataroot>",
      "<dataroot><T><a>1</b></T></dataroot>",
      "<dataroot><T><a>&x;</a></T></dataroot>",
      "<dataroot><T><a>1</a></T></dataroot>x",
      "<dataroot><T><a>1</a></T></dataroot><dataroot/>",
      "<dataroot a='1' a='2'><T><a>1</a></T></dataroot>",
      "<dataroot><T><a>\x01</a></T></dataroot>",
      "<dataroot><T><a>\xC2\xDD</a></T></dataroot>",
      "<dataroot \xC2><T><a>1</a></T></dataroot>",
      "<!DOCTYPE x [<!ENTITY a 'b'><!ENTITY c '&a;&a;'>]><dataroot><T><a>&c;</a></T></dataroot>",
      "<!DOCTYPE x [<!ENTITY a SYSTEM 'file:///etc/hostname'>]><dataroot><T><a>&a;</a></T></dataroot>",
      std::string("<dataroot><T><a>1") + '\0' + "</a></T></dataroot>",
  };
  for (const std::string& content : cases) {
    TableFolder folder;
    folder.schema("T", "T", {"a"});
    folder.write("T.xml", content);
    OpenConnection connection;
    connection.Open(folder.text(), L"", L"", 0);
    EXPECT_EQ(printed(connection.run(L"select * from T")), "empty\n") << content;
    EXPECT_EQ(printed(connection.run(L"select count(*) from T")), "0\n") << content;
  }
}

TEST(Data, AFileBeyondTheLimitIsNotRead) {
  TableFolder folder;
  folder.schema("T", "T", {"a"});
  folder.write("T.xml", "<dataroot><T><a>1</a></T></dataroot>");
  std::filesystem::resize_file(folder.path() / "T.xml", platform::XmlLimits().bytes + 1);
  OpenConnection connection;
  connection.Open(folder.text(), L"", L"", 0);
  EXPECT_EQ(printed(connection.run(L"select * from T")), "empty\n");
  platform::XmlError error;
  EXPECT_FALSE(platform::loadXml(folder.path() / "T.xml", &error));
  EXPECT_FALSE(error.what.empty());
}

TEST(Data, EncodingsAreDecoded) {
  TableFolder folder;
  folder.schema("T", "T", {"a"});
  folder.write(
      "T.xml",
      "<?xml version=\"1.0\" encoding=\"GB2312\"?><dataroot><T><a>\xC2\xDD\xCB\xA8</a></T></dataroot>");
  OpenConnection connection;
  connection.Open(folder.text(), L"", L"", 0);
  EXPECT_EQ(printed(connection.run(L"select a from T where a='螺栓'")), "螺栓\n");
}

TEST(Data, IsReadOnceForEachConnection) {
  TableFolder folder;
  folder.schema("T", "T", {"a:int"});
  folder.rows("T", "<T><a>1</a></T>");
  folder.schema("Late", "Late", {"a"});
  OpenConnection connection;
  connection.Open(folder.text(), L"", L"", 0);
  EXPECT_EQ(printed(connection.run(L"select * from T")), "1\n");
  EXPECT_EQ(printed(connection.run(L"select * from Late")), "empty\n");
  folder.rows("T", "<T><a>2</a></T>");
  folder.rows("Late", "<Late><a>3</a></Late>");
  connection.Open(folder.text(), L"", L"", 0);
  EXPECT_EQ(printed(connection.run(L"select * from T")), "1\n") << "documents outlive another Open";
  EXPECT_EQ(printed(connection.run(L"select * from Late")), "empty\n") << "a failure is kept, too";
  OpenConnection copy = connection;
  EXPECT_EQ(printed(copy.run(L"select * from T")), "1\n");
  copy = OpenConnection();
  EXPECT_FALSE(copy.run(L"select * from T"));
  OpenConnection fresh;
  fresh.Open(folder.text(), L"", L"", 0);
  EXPECT_EQ(printed(fresh.run(L"select * from T")), "2\n");

  const auto& document = connection.GetXmlDoc(folder.text() + L"\\t.XML");
  ASSERT_TRUE(document);
  EXPECT_EQ(document->selectNodes(L"dataroot/T[a=1]").length(), 1);
  EXPECT_EQ(&connection.GetXmlDoc(folder.text() + L"\\T.xml"), &document);
  EXPECT_FALSE(connection.GetXmlDoc(folder.text() + L"\\none.xml"));
}

TEST(Data, ReadTableDataTakesTheFilterAsItStands) {
  TableFolder folder;
  folder.schema("T", "T", {"a:int"});
  folder.rows("T", "<T><a>1</a></T><T><a>2</a></T><U><a>5</a></U>");
  OpenConnection connection;
  connection.Open(folder.text(), L"", L"", 0);
  const auto count = [&](const wchar_t* filter) {
    _Tables table;
    table.fields.push_back({L"a", L"", L"", L""});
    table.count = -1;
    const int answer = connection.ReadTableData(folder.text() + L"\\T.xml", table, filter);
    return answer ? table.count : -1;
  };
  EXPECT_EQ(count(L"T"), 2);
  EXPECT_EQ(count(L"U"), 1);
  EXPECT_EQ(count(L"V"), 0);
  EXPECT_EQ(count(L"T[a>1]"), 1);
  for (const wchar_t* bad :
       {L"", L"T[", L"T[]", L"T[a=1", L"T[a=1]x", L"*", L"1T", L"T/a", L"T[a=1][a=1]", L"T[a]"})
    EXPECT_EQ(count(bad), -1) << platform::utf8From(bad);
}

TEST(Statement, ClausesAreCut) {
  struct Case {
    const wchar_t* text;
    const char* wanted;  ///< type,field,alias,table,where,group,order; empty: refused
  };
  const Case cases[] = {
      {L"select * from T", "-1,*,,T,,,"},
      {L"select max(D) as m from [A B] where x=1 group by S order by T desc", "0,D,m,A B,x=1,S,T desc"},
      {L"SELECT Count( * ) AS (N) FROM [[T]]", "2,*,N,T,,,"},
      {L"select [a] from T order by x group by y", "-1,a,,T,,y,"},
      {L"select a from T group by y where x=1 order by z", "-1,a,,T,,y,z"},
      {L"select a from T where x=1 where y=2", "-1,a,,T,x=1 where y=2,,"},
      {L"select a from T where x='order by'", "-1,a,,T,x=',,'"},
      {L"select\ta\r\nfrom\tT\nwhere\nx=1", "-1,a,,T,x=1,,"},
      {L"select as from T", "-1,as,,T,,,"},
      {L"select a from", ""},
      {L"select  from T", ""},
      {L"a from T", ""},
      {L"select [] from T", ""},
      {L"select max( ) from T", ""},
      {L"select xmax from T", ""},
      {L"", ""},
  };
  for (const Case& item : cases) {
    OpenConnection connection;
    tagSQL sql;
    std::string got;
    if (connection.AnalyzeSql(item.text, &sql))
      got = platform::utf8From(CString(std::to_wstring(sql.selectField.type)) + L"," + sql.selectField.field +
                               L"," + sql.selectField.alias + L"," + sql.table + L"," + sql.where + L"," +
                               sql.groupBy + L"," + sql.orderBy);
    EXPECT_EQ(got, item.wanted) << platform::utf8From(item.text);
  }
  OpenConnection connection;
  EXPECT_EQ(connection.AnalyzeSql(L"select * from T", nullptr), 0);
  EXPECT_FALSE(connection.Execute(nullptr));
}

TEST(Statement, RowFilterText) {
  tagSQL sql;
  EXPECT_EQ(OpenConnection::MakeRowFilter(sql, L"GB 70"), CString(L"GB_x0020_70"));
  sql.where = L"[a]=1 AND b='x And y' OR c=2 Or d=3 anD e=4";
  EXPECT_EQ(OpenConnection::MakeRowFilter(sql, L"T"),
            CString(L"T[a=1 and b='x and y' or c=2 or d=3 anD e=4]"));
}

TEST(Statement, HostileTextsEnd) {
  TableFolder folder;
  folder.schema("T", "T", {"a:int"});
  folder.rows("T", "<T><a>1</a></T>");
  OpenConnection connection;
  connection.Open(folder.text(), L"", L"", 0);
  CString nested(L"select a from T where a=1"), deep, wide(L"select a from T where a=1");
  for (int i = 0; i < 2000; ++i) nested = L"select a from T where a=(" + nested + L")";
  for (int i = 0; i < 100000; ++i) deep += L"(";
  for (int i = 0; i < 100000; ++i) wide += L" or a=1";
  EXPECT_EQ(printed(connection.run(nested)), "empty\n");
  EXPECT_EQ(printed(connection.run(L"select a from T where " + deep + L"a=1")), "empty\n");
  EXPECT_EQ(printed(connection.run(wide)), "empty\n") << "more comparisons than are taken";
  EXPECT_EQ(printed(connection.run(L"select a from T where a=(select max(a) from T)")), "1\n");
}

TEST(Samples, RealExportsAnswer) {
  OpenConnection connection;
  ASSERT_EQ(connection.Open(platform::fromNative(KORVANE_TEST_DATA "/tables"), L"", L"", 0), 0);
  EXPECT_EQ(connection.OpenSchema(adSchemaTables, {}, {})->GetRecordCount(), 4);
  EXPECT_EQ(printed(connection.run(L"select count(*) from USysRegInfo where Type=1")), "4\n");
  EXPECT_EQ(printed(connection.run(L"select Subkey from USysRegInfo group by Subkey")),
            "HKEY_CURRENT_ACCESS_PROFILE\\Menu Add-ins\\&Version Control\n"
            "HKEY_CURRENT_ACCESS_PROFILE\\Menu Add-ins\\&Export All Source\n");
  EXPECT_EQ(printed(connection.run(L"select ObjectType from tblSaveXML where Notes='Test'")), "Form\n");
  EXPECT_EQ(printed(connection.run(L"select * from tblSaveXML where ID=1")), "1|Table|||\n");
  EXPECT_EQ(printed(connection.run(L"select ID from USys App Log")), "null\n");
  EXPECT_EQ(
      printed(connection.run(L"select Error_x0020_Number from USys Application Log where Category='执行'")),
      "0\n");
  EXPECT_EQ(printed(connection.run(L"select Description from [USys Application Log] where ID=2")),
            "第一行\r\n第二行：外径 20 毫米\n");
  EXPECT_EQ(printed(connection.run(L"select SourceObject from [USys Application Log] where ID=7")), "NULL\n");
  EXPECT_EQ(printed(connection.run(L"select Description from [USys Application Log] where ID=7")), "''\n");
  EXPECT_EQ(connection.FieldType(L"fileflags", L"TBLINTERNAL"), CString())
      << "fields inside a field are not the table's";
  EXPECT_EQ(connection.FieldType(L"ObjectType", L"tblInternal"), CString(L"nvarchar"));
}

}  // namespace
