// Which files fail to load is checked through the configuration and scenario
// reads, as is a search through huge and deeply nested documents and the
// first child element of a REQUETE; here, what those reads rely on.
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
  TDomData loadText(const std::string &content) {
    writeFile(dir.file("doc.xml"), content);
    TDomData document;
    document.load(toWideString(dir.file("doc.xml").c_str()));
    return document;
  }
  // The text of the first element named `tag`, read into a string that held
  // other text.
  static ACE_WString contentOf(const TDomData &document, const ACE_WString &tag) {
    ACE_Array<TDomData> found;
    EXPECT_TRUE(document.getSubNodesByTagName(tag, found, true));
    ACE_WString out(L"previous");
    found[0].getContent(out);
    return out;
  }
};

} // namespace

// Copies share the document: found nodes stay readable after the node they
// came from is gone (checked by the address sanitizer too).
TEST_F(TDomDataTest, NodesOutliveTheDocumentNodeTheyCameFrom) {
  ACE_Array<TDomData> found;
  loadText("<R><X>kept</X></R>").getSubNodesByTagName(L"X", found, true);
  const TDomData copy = found[0];
  found = ACE_Array<TDomData>();
  ACE_WString text;
  copy.getContent(text);
  EXPECT_EQ(narrow(text), "kept");
}

TEST_F(TDomDataTest, ContentAndAttributes_ReplaceTheOutStringWithTheUntrimmedWideText) {
  const std::string longText(300, 'L');
  TDomData document = loadText("<R><A> DEV_TYPE_RCON </A><B><![CDATA[x<y]]></B><C/>"
                               "<N>Bo\xC3\xAEtier-\xC3\xA9</N><V VBatt='12.5' Empty=''/>"
                               "<J>a<![CDATA[b]]><!-- c --><S>d</S>e</J><L>" +
                               longText + "</L></R>");
  EXPECT_EQ(narrow(contentOf(document, L"A")), " DEV_TYPE_RCON ");
  EXPECT_EQ(narrow(contentOf(document, L"B")), "x<y");
  EXPECT_EQ(narrow(contentOf(document, L"C")), "");
  EXPECT_EQ(narrow(contentOf(document, L"J")), "abe") << "own text pieces only, joined";
  EXPECT_EQ(narrow(contentOf(document, L"L")), longText);
  const ACE_WString text = contentOf(document, L"N");
  ASSERT_EQ(text.length(), 9u);
  EXPECT_EQ(text[2], static_cast<ACE_WCHAR_T>(0xEE));
  EXPECT_EQ(text[8], static_cast<ACE_WCHAR_T>(0xE9));

  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(L"V", found, true);
  ACE_WString value;
  EXPECT_TRUE(found[0].getAttributeValue(L"VBatt", value));
  EXPECT_EQ(narrow(value), "12.5");
  EXPECT_FALSE(found[0].getAttributeValue(L"vbatt", value)) << "names are case-sensitive";
  EXPECT_EQ(value.length(), 0u) << "a missing attribute empties the string";
  EXPECT_TRUE(found[0].getAttributeValue(L"Empty", value));
}
