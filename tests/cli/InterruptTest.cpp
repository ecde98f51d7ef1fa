// Ctrl-C in the interactive shell, on a real terminal (a pseudo-terminal):
// it drops the line being typed and ends a long rx wait, and the session
// goes on; the end marker that woke the reader is not left in the queue.
#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <pty.h>
#include <string>
#include <sys/select.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

class Terminal {
public:
  Terminal() {
    pid_ = forkpty(&fd_, nullptr, nullptr, nullptr);
    if (pid_ == 0) {
      setenv("TERM", "dumb", 1);
      execl(CANSIMU_PROGRAM, CANSIMU_PROGRAM, "shell", CANSIMU_EXAMPLES_DIR "/bench.xml",
            static_cast<char *>(nullptr));
      _exit(127);
    }
  }
  ~Terminal() {
    if (pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == 0) {
      kill(pid_, SIGKILL);
      waitpid(pid_, nullptr, 0);
    }
    if (fd_ >= 0)
      close(fd_);
  }

  void type(const std::string &keys) {
    ASSERT_EQ(write(fd_, keys.data(), keys.size()), ssize_t(keys.size()));
  }

  // Reads until `text` has appeared after what earlier waits consumed; a
  // session that never shows it fails the test after 20 s instead of
  // hanging.
  bool waitFor(const std::string &text) {
    const auto deadline = Clock::now() + std::chrono::seconds(20);
    while (Clock::now() < deadline) {
      const size_t at = output_.find(text, seen_);
      if (at != std::string::npos) {
        seen_ = at + text.size();
        return true;
      }
      fd_set ready;
      FD_ZERO(&ready);
      FD_SET(fd_, &ready);
      timeval slice{0, 50000};
      if (select(fd_ + 1, &ready, nullptr, nullptr, &slice) > 0) {
        char buffer[4096];
        const ssize_t got = read(fd_, buffer, sizeof buffer);
        if (got <= 0)
          return false;
        output_.append(buffer, static_cast<size_t>(got));
      }
    }
    return false;
  }
  // What came since the last wait.
  std::string sinceLastWait() const { return output_.substr(seen_); }
  const std::string &output() const { return output_; }

  int exitStatus() {
    int status = 0;
    waitpid(pid_, &status, 0);
    pid_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

private:
  pid_t pid_ = -1;
  int fd_ = -1;
  std::string output_;
  size_t seen_ = 0;
};

} // namespace

TEST(CliInterrupt, CtrlC_DropsTheLineAndEndsAWaitAndTheSessionGoesOn) {
  Terminal terminal;
  ASSERT_TRUE(terminal.waitFor("cansimu> ")) << terminal.output();
  // The line editor puts the terminal in its own mode after the prompt; keys
  // typed before that are the terminal driver's, which a person cannot be
  // quick enough to meet.
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  terminal.type("verz\x03");
  ASSERT_TRUE(terminal.waitFor("cansimu> ")) << "Ctrl-C gives a fresh prompt:\n"
                                             << terminal.output();
  terminal.type("rx 60000\r");
  ASSERT_TRUE(terminal.waitFor("rx 60000"));
  std::this_thread::sleep_for(std::chrono::milliseconds(300));
  terminal.type("\x03");
  EXPECT_TRUE(terminal.waitFor("CAN_DrvRxMsg(timeout 60000 ms)")) << terminal.output();
  EXPECT_TRUE(terminal.waitFor("Ctrl-C: CAN_DrvEndFifo ended the wait")) << terminal.output();
  ASSERT_TRUE(terminal.waitFor("cansimu> ")) << terminal.output();
  // The marker that woke the reader was taken back: the queue is empty.
  terminal.type("rx 50\r");
  EXPECT_TRUE(terminal.waitFor("E_NO_EVENT (3)  queue empty")) << terminal.output();
  terminal.type("quit\r");
  EXPECT_EQ(terminal.exitStatus(), 0) << terminal.output();
  EXPECT_EQ(terminal.output().find("verz"), terminal.output().rfind("verz"))
      << "the dropped line never ran";
}
