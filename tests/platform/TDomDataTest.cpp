#include "platform/TDomData.h"
#include "platform/CodePage.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <string>

namespace {

std::string narrow(const ACE_WString &text) { return toAnsi(text.c_str()).get(); }

class TDomDataTest : public ::testing::Test {
protected:
  TempDir dir;
  TDomData loadText(const std::string &content, const std::string &name = "doc.xml") {
    writeFile(dir.file(name), content);
    TDomData document;
    document.load(toWideString(dir.file(name).c_str()));
    return document;
  }
};

} // namespace

TEST_F(TDomDataTest, Load_LeavesTheNodeNullForFilesThatAreNotXmlDocuments) {
  EXPECT_TRUE(loadText("").isNull()) << "empty";
  EXPECT_TRUE(loadText("just some text").isNull()) << "not XML";
  EXPECT_TRUE(loadText("<A><B>unclosed</A>").isNull()) << "not well-formed";
  EXPECT_TRUE(loadText("<A><B>").isNull()) << "truncated";
  EXPECT_TRUE(loadText(std::string("\x00\x01\xFF\xFE<A/>\x00", 9)).isNull()) << "binary";
  // A failed load also drops the document loaded before.
  TDomData node = loadText("<A/>");
  ASSERT_FALSE(node.isNull());
  node.load(toWideString(dir.file("nothing-here.xml").c_str()));
  EXPECT_TRUE(node.isNull());
  ACE_Array<TDomData> found;
  EXPECT_FALSE(node.getSubNodesByTagName(L"A", found, true));
}

TEST_F(TDomDataTest, GetSubNodesByTagName_FindsElementsAtAnyDepthInDocumentOrder) {
  TDomData document =
      loadText("<R><X n='1'/><S><X n='2'><X n='3'/></X></S><x n='lower'/><X n='4'/></R>");
  ASSERT_FALSE(document.isNull());
  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(L"X", found, true);
  ASSERT_EQ(found.size(), 4u);
  for (size_t i = 0; i < found.size(); ++i) {
    ACE_WString n;
    found[i].getAttributeValue(L"n", n);
    EXPECT_EQ(narrow(n), std::to_string(i + 1));
  }
  document.getSubNodesByTagName(L"NONE", found, true);
  EXPECT_EQ(found.size(), 0u) << "the array is refilled, not appended to";
}

TEST_F(TDomDataTest, NodesOutliveTheDocumentNodeTheyCameFrom) {
  ACE_Array<TDomData> found;
  {
    TDomData document = loadText("<R><X>kept</X></R>");
    document.getSubNodesByTagName(L"X", found, true);
  }
  ASSERT_EQ(found.size(), 1u);
  TDomData copy = found[0];
  ACE_WString text;
  copy.getContent(text);
  EXPECT_EQ(narrow(text), "kept");
}

TEST_F(TDomDataTest, GetContent_ReplacesTheStringWithTheUntrimmedText) {
  TDomData document = loadText("<R><A> DEV_TYPE_RCON </A><B><![CDATA[x<y]]></B><C/></R>");
  ACE_Array<TDomData> found;
  ACE_WString text(L"previous text");
  document.getSubNodesByTagName(L"A", found, true);
  found[0].getContent(text);
  EXPECT_EQ(narrow(text), " DEV_TYPE_RCON ");
  document.getSubNodesByTagName(L"B", found, true);
  found[0].getContent(text);
  EXPECT_EQ(narrow(text), "x<y");
  document.getSubNodesByTagName(L"C", found, true);
  found[0].getContent(text);
  EXPECT_EQ(narrow(text), "");
}

TEST_F(TDomDataTest, GetAttributeValue_LeavesTheStringEmptyForAMissingAttribute) {
  TDomData document = loadText("<R><V VBatt='12.5' Empty=''/></R>");
  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(L"V", found, true);
  ACE_WString value;
  EXPECT_TRUE(found[0].getAttributeValue(L"VBatt", value));
  EXPECT_EQ(narrow(value), "12.5");
  EXPECT_FALSE(found[0].getAttributeValue(L"vbatt", value)) << "names are case-sensitive";
  EXPECT_EQ(value.length(), 0u) << "the previous attribute's text is gone";
  found[0].getAttributeValue(L"Empty", value);
  EXPECT_EQ(value.length(), 0u);
}

TEST_F(TDomDataTest, GetFirstChildElement_SkipsTextAndComments) {
  TDomData document = loadText("<R><REQUETE> text <!-- c --><TRAME>22F190</TRAME></REQUETE></R>");
  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(L"REQUETE", found, true);
  TDomData child;
  found[0].getFirstChildElement(child, true);
  ASSERT_FALSE(child.isNull());
  ACE_WString text;
  child.getContent(text);
  EXPECT_EQ(narrow(text), "22F190");
  TDomData none;
  child.getFirstChildElement(none, true);
  EXPECT_TRUE(none.isNull());
}

TEST_F(TDomDataTest, NonAsciiTextComesOutAsWideCharacters) {
  TDomData document = loadText("<R><N>Bo\xC3\xAEtier-\xC3\xA9</N></R>");
  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(L"N", found, true);
  ACE_WString text;
  found[0].getContent(text);
  ASSERT_EQ(text.length(), 9u);
  EXPECT_EQ(text[2], static_cast<ACE_WCHAR_T>(0xEE));
  EXPECT_EQ(text[8], static_cast<ACE_WCHAR_T>(0xE9));
}

TEST_F(TDomDataTest, DeeplyNestedAndLargeDocumentsAreSearchedWithoutExhaustingTheStack) {
  std::string deep;
  constexpr int kDepth = 100000;
  for (int i = 0; i < kDepth; ++i)
    deep += "<D>";
  deep += "<X/>";
  for (int i = 0; i < kDepth; ++i)
    deep += "</D>";
  TDomData document = loadText(deep, "deep.xml");
  ASSERT_FALSE(document.isNull());
  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(L"X", found, true);
  EXPECT_EQ(found.size(), 1u);

  std::string wide = "<R>";
  for (int i = 0; i < 200000; ++i)
    wide += "<E a='" + std::to_string(i) + "'>some payload text of a realistic size</E>";
  wide += "</R>";
  ASSERT_GT(wide.size(), 10u * 1000 * 1000);
  TDomData big = loadText(wide, "big.xml");
  big.getSubNodesByTagName(L"E", found, true);
  EXPECT_EQ(found.size(), 200000u);
}
