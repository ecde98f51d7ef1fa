// Edits saved while the host runs, in each way an editor or a script saves a
// file, are seen by the very next look-up, however fast they follow.
#include "ecu/Scenario.h"
#include "platform/CodePage.h"
#include "support/TempDir.h"
#include "support/XmlFiles.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>

namespace fs = std::filesystem;

namespace {

ACE_WString wide(const std::string &text) { return toWideString(text.c_str()); }

// The scenario's only answer is `number` written with a fixed width, so that
// every save has the same length (an in-place write leaves no tail).
std::string scenarioAnswering(int number) {
  char answer[16];
  std::snprintf(answer, sizeof answer, "62%08X", number);
  return ScenarioFile().event("22F190", {answer}).xml();
}

struct SaveStyle {
  const char *name;
  // Saves `content` as `file` with modification time `seconds`; `spare` is a
  // folder of the same file system for the style's temporary file.
  std::function<void(const std::string &file, const std::string &spare, const std::string &content,
                     long long seconds)>
      save;
};

void overwriteInPlace(const std::string &file, const std::string &, const std::string &content,
                      long long seconds) {
  std::FILE *out = std::fopen(file.c_str(), "r+b");
  ASSERT_NE(out, nullptr);
  std::fwrite(content.data(), 1, content.size(), out);
  std::fclose(out);
  setModificationTime(file, seconds);
}

void truncateAndWrite(const std::string &file, const std::string &, const std::string &content,
                      long long seconds) {
  writeFile(file, content);
  setModificationTime(file, seconds);
}

// The new file gets its time before it takes the old one's place, so that
// only the rename reports the edit.
void renameOver(const std::string &file, const std::string &, const std::string &content,
                long long seconds) {
  const std::string saved = file + ".tmp";
  writeFile(saved, content);
  setModificationTime(saved, seconds);
  fs::rename(saved, file);
}

// Deleted, then created again under its name (a hard link made from a file
// in another folder, so that only the deletion and the creation report it).
void deleteAndRecreate(const std::string &file, const std::string &spare,
                       const std::string &content, long long seconds) {
  const std::string made = spare + "/new.xml";
  fs::remove(made);
  writeFile(made, content);
  setModificationTime(made, seconds);
  fs::remove(file);
  fs::create_hard_link(made, file);
}

// Written in another folder and moved in.
void moveIn(const std::string &file, const std::string &spare, const std::string &content,
            long long seconds) {
  const std::string made = spare + "/moved.xml";
  writeFile(made, content);
  setModificationTime(made, seconds);
  fs::rename(made, file);
}

} // namespace

TEST(ScenarioEditTest, EverySaveStyle_IsSeenByTheNextLookUpInATightLoop) {
  const SaveStyle styles[] = {{"in place", overwriteInPlace},
                              {"truncate and write", truncateAndWrite},
                              {"rename over", renameOver},
                              {"delete and re-create", deleteAndRecreate},
                              {"move in from another folder", moveIn}};
  for (const SaveStyle &style : styles) {
    TempDir dir;
    TempDir spare;
    const std::string file = dir.file("ecu.xml");
    long long seconds = 1000000;
    writeFile(file, scenarioAnswering(0));
    setModificationTime(file, seconds);
    Scenario scenario(wide(file));
    ASSERT_TRUE(scenario.load()) << style.name;
    int missed = 0;
    for (int save = 1; save <= 1000; ++save) {
      style.save(file, spare.path(), scenarioAnswering(save), ++seconds);
      ACE_WString response;
      ASSERT_EQ(scenario.findResponse(wide("22F190"), response), 0) << style.name;
      char expected[16];
      std::snprintf(expected, sizeof expected, "62%08X", save);
      if (toAnsi(response.c_str()).get() != std::string(expected))
        ++missed;
    }
    EXPECT_EQ(missed, 0) << style.name << ": saves whose answer the next look-up did not give";
  }
}
