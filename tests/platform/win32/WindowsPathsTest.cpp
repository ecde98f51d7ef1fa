// Paths and texts under the Windows ANSI code page: non-ASCII names, wide
// names, both kinds of slashes, and a file found only by its ANSI name.
#include "cansimu/cansimu.h"
#include "core/LecteurXML.h"
#include "core/SimuDriver.h"
#include "platform/CodePage.h"
#include "support/TempDir.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdio>
#include <string>

namespace {

const char kConsoleConfig[] = "<BENCH><MODECONSOLE/></BENCH>";

std::wstring wideOf(const std::string &utf8) {
  const int size = MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, nullptr, 0);
  std::wstring wide(static_cast<size_t>(size), L'\0');
  MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, &wide[0], size);
  wide.resize(static_cast<size_t>(size - 1));
  return wide;
}

void writeWide(const std::wstring &path, const char *content) {
  FILE *file = _wfopen(path.c_str(), L"wb");
  ASSERT_NE(file, nullptr);
  std::fputs(content, file);
  std::fclose(file);
}

// A reader whose load() is true once it got past the existence test.
class FindingReader : public LecteurXML {
public:
  explicit FindingReader(const std::wstring &path)
      : LecteurXML(ACE_WString(path.c_str(), path.size())) {}

protected:
  bool parse(const ACE_WString &) override { return true; }
  void initContent() override {}
  void clearContent() override {}
};

class WindowsPaths : public ::testing::Test {
protected:
  TempDir dir;
  std::wstring wideDir = wideOf(dir.path());
  void TearDown() override { CAN_DrvEnd(); }
};

} // namespace

TEST_F(WindowsPaths, TheAnsiCodePageIsTheSystemsOne) {
  const UINT codePage = GetACP();
  if (codePage != 1252)
    GTEST_SKIP() << "ANSI code page " << codePage;
  const auto wide = toWide("caf\xE9");
  EXPECT_EQ(wide[3], static_cast<ACE_WCHAR_T>(0xE9));
  EXPECT_STREQ(toAnsi(L"caf\xE9").get(), "caf\xE9");
}

TEST_F(WindowsPaths, AConfigurationInAFolderWithANonAsciiNameIsRead) {
  const std::wstring folder = wideDir + L"\\banc \xE9t\xE9";
  ASSERT_EQ(_wmkdir(folder.c_str()), 0);
  writeWide(folder + L"\\bench.xml", kConsoleConfig);
  const auto ansiPath = toAnsi((folder + L"\\bench.xml").c_str());
  ASSERT_EQ(CAN_DrvInit(ansiPath.get()), E_SUCCESS);
  EXPECT_TRUE(SimuDriver::existing()->consoleMode);
}

TEST_F(WindowsPaths, ForwardAndBackSlashesNameTheSameFile) {
  writeWide(wideDir + L"\\bench.xml", kConsoleConfig);
  for (const std::string &path : {dir.path() + "/bench.xml", dir.path() + "\\bench.xml"}) {
    ASSERT_EQ(CAN_DrvInit(path.c_str()), E_SUCCESS);
    EXPECT_TRUE(SimuDriver::existing()->consoleMode) << path;
    CAN_DrvEnd();
  }
}

TEST_F(WindowsPaths, AWideNameOutsideTheAnsiCodePageIsFoundAndRead) {
  const std::wstring path = wideDir + L"\\\x0416\x0443\x043A.xml"; // Cyrillic
  writeWide(path, kConsoleConfig);
  EXPECT_TRUE(FindingReader(path).load());
}

TEST_F(WindowsPaths, AFileThatExistsOnlyUnderItsAnsiNameIsFound) {
  // The wide name has a letter the ANSI code page lacks; its ANSI form is
  // the name the file really has.
  const std::wstring wideName = wideDir + L"\\caf\x0117.xml";
  const auto ansiName = toAnsi(wideName.c_str());
  const std::wstring existing = wideOf(std::string(ansiName.get()));
  if (existing == wideName || existing.find(L'?') != std::wstring::npos)
    GTEST_SKIP() << "the ANSI code page has no substitute for the letter";
  writeWide(toWideString(ansiName.get()).c_str(), kConsoleConfig);
  EXPECT_TRUE(FindingReader(wideName).load());
}
