#include "module/data/xml_file.h"

#include <gtest/gtest.h>

#include "tests/data/table_files.h"

namespace {

std::string contents(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {});
}

class XmlFile : public ::testing::Test {
 protected:
  CString name(const wchar_t* file) const { return folder_.text() + L"\\" + file; }
  TableFolder folder_;
};

TEST_F(XmlFile, NewFilesHaveTheStatedForms) {
  const auto document = IM_CreateXmlFile(name(L"a.xml"));
  ASSERT_TRUE(document);
  EXPECT_EQ(contents(folder_.path() / "a.xml"), "<?xml version=\"1.0\" encoding=\"GB2312\"?><root/>");
  EXPECT_EQ(document->documentElement().nodeName(), CString(L"root"));
  EXPECT_FALSE(IM_CreateXmlFile(name(L"none\\a.xml")));

  CReadAndWriteXMLFile file(L"IM_LanguageSwitch");
  EXPECT_EQ(file.OpenXMLFile(name(L"b.xml")), 1);
  EXPECT_EQ(contents(folder_.path() / "b.xml"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\" standalone=\"no\" ?><IM_LanguageSwitch />");
  CReadAndWriteXMLFile wrong(L"no name");
  EXPECT_EQ(wrong.CreateXMLFile(name(L"c.xml")), 0);
  EXPECT_FALSE(std::filesystem::exists(folder_.path() / "c.xml"));
  EXPECT_EQ(file.OpenXMLFile(name(L"none\\c.xml")), 0);
  EXPECT_FALSE(file.GetRootNode());
  EXPECT_EQ(file.SaveXMLFile(), 0);
}

TEST_F(XmlFile, BrokenFilesStayAsTheyAre) {
  folder_.write("a.xml", "<a><b>");
  CReadAndWriteXMLFile file;
  EXPECT_EQ(file.OpenXMLFile(name(L"a.xml")), 0);
  EXPECT_EQ(file.SaveXMLFile(), 0);
  EXPECT_EQ(IM_SetXmlValue(name(L"a.xml"), L"a/b", L"k", L"v"), 0);
  EXPECT_EQ(contents(folder_.path() / "a.xml"), "<a><b>");
}

TEST_F(XmlFile, SavedAsUtf8WhateverTheFileSaid) {
  folder_.write(
      "a.xml",
      "<?xml version=\"1.0\" encoding=\"GB2312\"?><root><!-- \xD7\xA2 --><item n=\"\xC2\xDD\"/></root>");
  ASSERT_EQ(IM_SetXmlValue(name(L"a.xml"), L"root/item", L"k", L"栓"), 1);
  EXPECT_EQ(contents(folder_.path() / "a.xml"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root>\n\t<!-- 注 -->\n\t<item n=\"螺\" k=\"栓\" "
            "/>\n</root>\n");
}

TEST_F(XmlFile, ValuesByExpression) {
  folder_.write("a.xml", "<root><item name='a' v='1'/><item name='b' v='2' w=''/><item name='c'/></root>");
  const CString file = name(L"a.xml");
  EXPECT_EQ(IM_GetXmlValue(file, L"root/item", L"v", L""), CString(L"1"));
  EXPECT_EQ(IM_GetXmlValue(file, L"root/item", L"v", L"name='b'"), CString(L"2"));
  EXPECT_EQ(IM_GetXmlValue(file, L"root/item[@name='b']", L"w", L""), CString());
  EXPECT_EQ(IM_GetXmlValue(file, L"root/item", L"none", L""), CString());
  EXPECT_EQ(IM_GetXmlValue(file, L"root/item", L"v", L"name='"), CString());
  EXPECT_EQ(IM_GetXmlValue(name(L"none.xml"), L"root/item", L"v", L""), CString());

  CStringArray values, names;
  values.Add(L"before");
  EXPECT_EQ(IM_GetXmlArray(file, L"root/item", L"v", values), 1);
  EXPECT_EQ(values.GetSize(), 3);
  EXPECT_EQ(values[2], CString(L"2"));
  EXPECT_EQ(IM_GetXmlArray(file, L"root/none", L"v", values), 1);
  EXPECT_EQ(IM_GetXmlArray(file, L"root/[", L"v", values), 0);
  EXPECT_EQ(IM_GetXmlArray(name(L"none.xml"), L"root", L"v", values), 0);
  EXPECT_EQ(values.GetSize(), 3);

  EXPECT_EQ(IM_GetXmlSegs(file, L"root/item[2]", names), 1);
  EXPECT_EQ(names[0] + names[1] + names[2], CString(L"namevw"));
  EXPECT_EQ(IM_GetXmlSegs(file, L"root/none", names), 0);
  EXPECT_EQ(IM_GetXmlSegs(std::shared_ptr<IXMLDOMDocument>(), L"root", names), 0);

  std::vector<CStringArray> rows;
  CStringArray wanted;
  wanted.Add(L"v");
  wanted.Add(L"name");
  const auto document = platform::loadXml(folder_.path() / "a.xml");
  EXPECT_EQ(IM_GetXmlMatrix(document, L"//item", wanted, rows), 1);
  ASSERT_EQ(rows.size(), 3u);
  EXPECT_EQ(rows[1][0] + rows[1][1], CString(L"2b"));
  EXPECT_EQ(rows[2][0], CString());
  EXPECT_EQ(rows[2][1], CString(L"c"));
  EXPECT_EQ(IM_GetXmlMatrix(document, L"//[", wanted, rows), 0);
  EXPECT_EQ(IM_GetXmlMatrix(nullptr, L"//item", wanted, rows), 0);
}

TEST_F(XmlFile, MissingNodesAreMadeOnce) {
  IM_CreateXmlFile(name(L"a.xml"));
  const CString file = name(L"a.xml");
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(IM_SetXmlValue(file, L"root/group[@name='x y' ][@k=\"1\"]/item", L"v", L"1"), 1);
    EXPECT_EQ(IM_SetXmlValue(file, L"root/group/item", L"w", L"2"), 1);
    EXPECT_EQ(IM_SetXmlValue(file, L"plain", L"v", L"3"), 1);
  }
  EXPECT_EQ(IM_SetXmlValue(file, L"root", L"v", L"4"), 1);
  for (const wchar_t* bad :
       {L"root/a[1]", L"root/a[@b]", L"root/a[b='1']", L"root/*[@b='1']", L"root/a[@b='1", L"root/a b", L""})
    EXPECT_EQ(IM_SetXmlValue(file, bad, L"v", L"1"), 0) << platform::utf8From(bad);
  EXPECT_EQ(IM_SetXmlValue(file, L"root/x", L"no name", L"1"), 0);
  EXPECT_EQ(contents(folder_.path() / "a.xml"),
            "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<root v=\"4\">\n\t<group name=\"x y\" k=\"1\">\n"
            "\t\t<item v=\"1\" w=\"2\" />\n\t</group>\n\t<plain v=\"3\" />\n</root>\n");
}

TEST_F(XmlFile, PathsOfTheClass) {
  CReadAndWriteXMLFile file(L"R");
  ASSERT_EQ(file.CreateXMLFile(name(L"a.xml")), 1);
  IXMLDOMElement module = file.AddNode(L"", L"Module");
  module.setAttribute(L"name", L"A");
  IXMLDOMElement catalog = file.AddNode(L"Module[@name='A']", L"Catalog");
  catalog.setAttribute(L"name", L"x\\y");
  EXPECT_TRUE(file.AddNode(L"R\\Module[@name='A']\\Catalog[@name='x\\y']", L"Item", L"text"));
  EXPECT_FALSE(file.AddNode(L"Module[@name='B']", L"Catalog"));
  EXPECT_FALSE(file.AddNode(L"", L"no name"));
  EXPECT_EQ(file.GetNodeValue(L"R\\Module\\Catalog\\Item"), CString(L"text"));
  EXPECT_EQ(file.GetNodeValue(L"Module\\\\Catalog\\\\Item"), CString(L"text"));
  EXPECT_EQ(file.GetNodeValue(L"Module//Item"), CString(L"text"));
  EXPECT_EQ(file.GetNodeValue(L"Module\\Item"), CString());
  EXPECT_FALSE(file.FindNode(L""));
  EXPECT_TRUE(file.FindNode(L"R") == file.GetRootNode());
  EXPECT_TRUE(file.AppendNode(catalog, L"Item", L"more"));
  EXPECT_FALSE(file.AppendNode(IXMLDOMNode(), L"Item"));
  EXPECT_TRUE(file.CreateNode(L"Module[@name='C']\\Catalog", L"Item", L"c"));
  EXPECT_TRUE(file.OpenNode(L"Module[@name='C']\\Catalog\\Item") ==
              file.FindNode(L"Module[@name='C']\\Catalog\\Item"));
  EXPECT_EQ(file.SaveXMLFile(), 1);

  CReadAndWriteXMLFile again(L"Other");
  ASSERT_EQ(again.OpenXMLFile(name(L"a.xml")), 1);
  EXPECT_EQ(again.GetRootNode().nodeName(), CString(L"R"));
  EXPECT_EQ(again.GetNodeValue(L"Module[@name='C']\\Catalog\\Item"), CString(L"c"));
}

}  // namespace
