#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "platform/text/cstring.h"
#include "platform/xml/dom.h"
#include "tests/support/temporary_tree.h"

namespace {

using platform::parseXml;
using platform::XmlError;
using platform::XmlLimits;

std::string contents(const std::filesystem::path& path) {
  std::ostringstream out;
  out << std::ifstream(path, std::ios::binary).rdbuf();
  return out.str();
}

TEST(XmlEncoding, DecodesByMarkOrDeclaration) {
  struct Case {
    const char* what;
    std::string bytes;
    const wchar_t* text;
  };
  using namespace std::string_literals;
  const Case cases[] = {
      {"plain", "<a>\xE8\x9E\xBA</a>", L"螺"},
      {"utf-8 mark beats the declaration",
       "\xEF\xBB\xBF<?xml version='1.0' encoding='GB2312'?><a>\xE8\x9E\xBA</a>", L"螺"},
      {"gb2312", "<?xml version='1.0' encoding='GB2312'?><a>\xC2\xDD\xCB\xA8</a>", L"螺栓"},
      {"gb2312 with a character of its superset only",
       "<?xml version='1.0' encoding='gb2312'?><a>\x81\x40</a>", L"丂"},
      {"gb18030 of four bytes", "<?xml version='1.0' encoding='GB18030'?><a>\x90\x30\x81\x30</a>",
       L"\x10000"},
      {"big5", "<?xml version=\"1.0\" encoding=\"Big5\"?><a>\xC1\xB3</a>", L"螺"},
      {"shift-jis", "<?xml version='1.0' encoding='Shift_JIS'?><a>\x97\xB3</a>", L"竜"},
      {"euc-kr", "<?xml version='1.0' encoding='euc-kr'?><a>\xB0\xA1</a>", L"가"},
      {"latin 1", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xD8</a>", L"Ø"},
      {"windows-1250", "<?xml version='1.0' encoding='windows-1250'?><a>\xB3</a>", L"ł"},
      {"utf-16 le", "\xFF\xFE<\0a\0>\0\xBA\x87<\0/\0a\0>\0"s, L"螺"},
      {"utf-16 be without a mark", "\0<\0a\0>\x87\xBA\0<\0/\0a\0>"s, L"螺"},
      {"8-bit file that declares utf-16", "<?xml version='1.0' encoding='UTF-16'?><a>\xE8\x9E\xBA</a>",
       L"螺"},
  };
  for (const Case& row : cases) {
    XmlError error;
    auto document = parseXml(row.bytes, &error);
    ASSERT_TRUE(document) << row.what << ": " << error.message();
    EXPECT_EQ(document->documentElement().text(), CString(row.text)) << row.what;
  }
}

TEST(XmlRead, BadInputGivesNoDocumentAndAPlace) {
  struct Case {
    std::string bytes;
    std::size_t offset, line;
    const char* part;
  };
  using namespace std::string_literals;
  const Case cases[] = {
      {"", 0, 1, "no element"},
      {"<!-- only -->", 0, 1, "no element"},
      {"<a>\n<b></a>", 0, 2, ""},
      {"<a/><b/>", 0, 1, "second element"},
      {"<a/>text", 0, 1, "outside"},
      {"text<a/>", 0, 1, "outside"},
      {"<a>\n\n&lol;</a>", 5, 3, "reference"},
      {"<!DOCTYPE a [<!ENTITY x SYSTEM 'file:///etc/passwd'>]><a>&x;</a>", 57, 1, "reference"},
      {"<a>&#1;</a>", 3, 1, "reference"},
      {"<a>&#xD800;</a>", 3, 1, "reference"},
      {"<a>&#99999999999999999999;</a>", 3, 1, "reference"},
      {"<a>& b</a>", 3, 1, "reference"},
      {"<?xml version='1.0'/><a/><?p ?>", 0, 1, "declaration"},
      {"<?xml version='1.0'", 0, 1, "declaration"},
      {"<a k='<![CDATA['>&no;</a>", 17, 1, "reference"},
      {"<a k='<![CDATA[&#3;'/>", 15, 1, "reference"},
      {"<a>x\0y</a>"s, 4, 1, "valid"},
      {"<a>x\x01y</a>", 4, 1, "valid"},
      {"<a>\n\xC2\xDD</a>", 4, 2, "valid"},
      {"<a>\xED\xA0\x80</a>", 3, 1, "valid"},
      {"<a>\xC0\x80</a>", 3, 1, "valid"},
      {"<a>\xEF\xBF\xBF</a>", 3, 1, "valid"},
      {"<?xml version='1.0' encoding='GB2312'?><a>\xC2</a>", 42, 1, "936"},
      {"<?xml version='1.0' encoding='klingon'?><a/>", 0, 1, "klingon"},
      {"\xFF\xFE<\0a\0>\0\x00\xD8"s, 3, 1, "UTF-16"},
      {"<a x='1' y='2' x='3'/>", 0, 1, "twice"},
      {"<a x='&lt;' y='<'/>", 15, 1, "attribute"},
      {"<!-- ' --><a>'</a><b k='x'/>", 0, 1, "second"},
  };
  for (const Case& row : cases) {
    XmlError error;
    EXPECT_FALSE(parseXml(row.bytes, &error)) << row.bytes;
    if (row.offset > 0) {
      EXPECT_EQ(error.offset, row.offset) << row.bytes;
    }
    EXPECT_EQ(error.line, row.line) << row.bytes;
    EXPECT_NE(error.what.find(row.part), std::string::npos) << error.message();
    EXPECT_FALSE(error.what.empty());
  }
}

TEST(XmlRead, ReferencesInsideCommentsAndCDataAreText) {
  auto document = parseXml("<?x &no; ?><a><!-- &no; & --><![CDATA[&no;]]>&lt;&#x87BA;&#10;<!-- <b & --></a>");
  ASSERT_TRUE(document);
  EXPECT_EQ(document->documentElement().text(), CString(L"&no;<螺\n"));
  XmlError error;
  EXPECT_FALSE(parseXml("<a><!-- &no; -->&no;</a>", &error));
  EXPECT_EQ(error.offset, 16u);
}

TEST(XmlRead, ApostrophesInTextAreNoQuotes) {
  EXPECT_TRUE(parseXml("<a k='&lt;'>it's<!-- ' --><b k=\">\"/>' <c/></a>"));
}

TEST(XmlRead, LimitsHold) {
  XmlLimits limits;
  limits.depth = 3;
  EXPECT_TRUE(parseXml("<a><b><c/></b></a>", nullptr, limits));
  XmlError error;
  EXPECT_FALSE(parseXml("<a><b><c><d/></c></b></a>", &error, limits));
  EXPECT_NE(error.what.find("deep"), std::string::npos);

  limits = {};
  limits.bytes = 7;
  EXPECT_TRUE(parseXml("<a>b</a>", &error, {.bytes = 8}));
  EXPECT_FALSE(parseXml("<a>b</a>", &error, limits));
  limits = {};
  limits.items = 3;
  EXPECT_FALSE(parseXml("<a><b/><b/><b/></a>", &error, limits));

  std::string deep, nested;
  for (int i = 0; i < 200000; ++i) deep += "<a>";
  EXPECT_FALSE(parseXml(deep, &error));
  for (int i = 0; i < 200000; ++i) nested += "</a>";
  EXPECT_FALSE(parseXml(deep + nested, &error));
}

TEST(XmlRead, MissingFileAndFolder) {
  const test::TemporaryFolder folder;
  XmlError error;
  EXPECT_FALSE(platform::loadXml(folder.path() / "none.xml", &error));
  EXPECT_NE(error.message().find("none.xml"), std::string::npos);
  EXPECT_FALSE(platform::loadXml(folder.path(), &error));
  EXPECT_TRUE(error);
}

TEST(XmlTree, WalksNamesAndValues) {
  auto document = parseXml(
      "<?xml version='1.0'?><!-- c --><x:a od:k='v' b=''><!--one--><b> </b>t<![CDATA[u]]><c>w</c></x:a>");
  ASSERT_TRUE(document);
  const IXMLDOMElement root = document->documentElement();
  EXPECT_EQ(root.nodeName(), CString(L"x:a"));
  EXPECT_EQ(root.baseName(), CString(L"a"));
  EXPECT_EQ(root.getAttribute(L"od:k"), CString(L"v"));
  EXPECT_EQ(root.getAttribute(L"b"), CString());
  EXPECT_EQ(root.getAttribute(L"k"), std::nullopt);
  EXPECT_FALSE(root.nodeValue());
  EXPECT_EQ(root.text(), CString(L"tuw"));
  CString names;
  for (IXMLDOMNode child = root.firstChild(); child; child = child.nextSibling())
    names += child.nodeName() + L" ";
  EXPECT_EQ(names, CString(L"#comment b #text #cdata-section c "));
  EXPECT_EQ(root.firstChild().nodeValue(), CString(L"one"));
  EXPECT_FALSE(root.firstChild().nextSibling().firstChild());  // white space alone is no node
  EXPECT_EQ(root.childNodes().length(), 5);
  EXPECT_FALSE(root.childNodes().item(5));
  EXPECT_FALSE(root.childNodes().item(-1));
  EXPECT_EQ(root.lastChild().previousSibling().parentNode(), root);
  EXPECT_FALSE(IXMLDOMElement(root.firstChild()));
  EXPECT_TRUE(root.parentNode() == *document);
}

TEST(XmlTree, NullHandlesAnswerEmpty) {
  IXMLDOMNode none;
  EXPECT_FALSE(none || none.firstChild() || none.parentNode() || none.selectNodes(L"a") || none.childNodes());
  EXPECT_TRUE(none.nodeName().IsEmpty() && none.text().IsEmpty() && none.attributes().empty());
  EXPECT_FALSE(none.setText(L"x") || none.setAttribute(L"a", L"b") || none.appendElement(L"a") ||
               none.removeChild(none) || none.appendComment(L"c") || none.removeAttribute(L"a"));
}

TEST(XmlSelect, ExpressionsAndTheirFaults) {
  auto document = parseXml("<r><i n='1'>a</i><i n='2'>b</i><g><i n='3'/></g></r>");
  EXPECT_EQ(document->selectSingleNode(L"r/i[@n='2']").text(), CString(L"b"));
  EXPECT_EQ(document->selectNodes(L"//i").length(), 3);
  EXPECT_TRUE(document->selectNodes(L"//none"));
  EXPECT_EQ(document->selectNodes(L"//none").length(), 0);
  for (const wchar_t* wrong : {L"", L"[", L"r/i[", L"count(r)", L"'text'", L"1", L"r/i[unknown()]"})
    EXPECT_FALSE(document->selectNodes(wrong)) << CString(wrong).GetLength();
  EXPECT_FALSE(document->selectSingleNode(L"r/i/@n"));
}

TEST(XmlChange, BuildsSetsAndRemoves) {
  IXMLDOMDocument document;
  EXPECT_FALSE(document.documentElement());
  IXMLDOMElement root = document.appendElement(L"root");
  ASSERT_TRUE(root);
  EXPECT_FALSE(document.appendElement(L"second"));
  for (const wchar_t* bad : {L"", L"1a", L"a b", L"<", L"a>", L"-a"}) {
    EXPECT_FALSE(root.appendElement(bad));
    EXPECT_FALSE(root.setAttribute(bad, L"x"));
  }
  IXMLDOMElement item = root.appendElement(L"项");
  EXPECT_TRUE(item.setAttribute(L"n", L"<\"&'>\n"));
  EXPECT_TRUE(item.setAttribute(L"n", L"<\"&'>\t"));
  EXPECT_TRUE(item.setText(L"old"));
  EXPECT_TRUE(
      item.setText(L"a\x01"
                   L"b]]>&"));
  EXPECT_TRUE(root.insertElementBefore(L"first", item));
  EXPECT_FALSE(root.insertElementBefore(L"first", root));
  EXPECT_EQ(root.firstChild().nodeName(), CString(L"first"));
  auto again = parseXml(document.toUtf8());
  ASSERT_TRUE(again);
  const IXMLDOMNode read = again->selectSingleNode(L"root/项");
  EXPECT_EQ(read.text(), CString(L"a\xFFFD"
                                 L"b]]>&"));
  EXPECT_EQ(read.getAttribute(L"n"), CString(L"<\"&'>\t"));
  EXPECT_FALSE(root.removeChild(root));
  EXPECT_TRUE(root.removeChild(item));
  EXPECT_EQ(root.childNodes().length(), 1);
}

TEST(XmlSave, OddDeclarationsCanBeReadAgain) {
  const std::pair<const char*, const char*> cases[] = {
      {"<?xml version=\"1.1\" standalone=\"yes\"?><r/>",
       "version=\"1.1\" encoding=\"UTF-8\" standalone=\"yes\"?>"},
      {"<?xml version=\"1.0\" standalone='a\"b'?><r/>", "version=\"1.0\" encoding=\"UTF-8\"?>"},
      {"<?xml version='1\"0'?><r/>", "version=\"1.0\" encoding=\"UTF-8\"?>"},
  };
  for (const auto& [text, expected] : cases) {
    const auto document = parseXml(text);
    ASSERT_TRUE(document) << text;
    EXPECT_NE(document->toUtf8().find(expected), std::string::npos) << document->toUtf8();
    EXPECT_TRUE(parseXml(document->toUtf8())) << text;
  }
}

TEST(XmlSave, WritesIndentedUtf8WithCommentsKept) {
  auto document = parseXml(
      "<?xml version=\"1.0\" encoding=\"GB2312\" standalone=\"no\"?>"
      "<!-- \xCA\xD7 --><!DOCTYPE r><r><a k=\"1\"/><!-- in --><b>t<c/>u</b><![CDATA[<x>]]></r><!-- last -->");
  ASSERT_TRUE(document);
  const test::TemporaryFolder folder;
  const auto path = folder.path() / "saved.xml";
  ASSERT_TRUE(document->save(path));
  EXPECT_EQ(contents(path),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\"?>\n"
            "<!-- 首 -->\n<!DOCTYPE r>\n<r>\n\t<a k=\"1\" />\n\t<!-- in -->\n"
            "\t<b>t<c />u</b><![CDATA[<x>]]></r>\n<!-- last -->\n");
  std::error_code status;
  std::filesystem::permissions(path, std::filesystem::perms(0600), status);
  const std::string before = contents(path);
  auto again = platform::loadXml(path);
  ASSERT_TRUE(again && again->save(path));
  EXPECT_EQ(contents(path), before);
  EXPECT_EQ(std::filesystem::status(path).permissions(), std::filesystem::perms(0600));
  int files = 0;
  for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(path.parent_path())) ++files;
  EXPECT_EQ(files, 1);
  XmlError error;
  EXPECT_FALSE(document->save(folder.path() / "none" / "x.xml", &error));
  EXPECT_NE(error.message().find("x.xml"), std::string::npos);
}

TEST(XmlTree, HandlesKeepTheDocumentAlive) {
  IXMLDOMNode node = parseXml("<a><b>x</b></a>")->documentElement().firstChild();
  EXPECT_EQ(node.text(), CString(L"x"));
  EXPECT_EQ(node.parentNode().nodeName(), CString(L"a"));
}

}  // namespace
