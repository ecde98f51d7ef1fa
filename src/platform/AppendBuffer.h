// Text on its way to an append-only file (the log file, the bus trace):
// collected in memory and handed to the system in few writes, so that a line
// costs no system call of its own.
//
// While the driver lives, a writer thread writes what is pending every few
// milliseconds: a host call then pays no write at all, and a host that
// crashes loses at most the last few milliseconds. Without the writer (no
// driver, or CANSIMU_FLUSH=call for readers that follow the file call by
// call) each host call writes what it logged as it ends, and before it waits
// or sleeps. Either way the pending text is written when the driver ends and
// when the file is closed.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdio>
#include <mutex>
#include <string>

class AppendBuffer {
public:
  // The process's buffers live as long as the process: they are made on
  // first use and never destroyed, so that the unload hook may use them
  // whatever the order of static destruction.
  AppendBuffer();
  AppendBuffer(const AppendBuffer &) = delete;
  AppendBuffer &operator=(const AppendBuffer &) = delete;

  // Writes what is pending to the current file, then appends to `file`
  // (null: no file) from now on. Gives back the previous file, not closed
  // (null when it could not be let go: a thread ended while it wrote).
  std::FILE *attach(std::FILE *file);
  bool isOpen() const { return open.load(std::memory_order_relaxed); }

  // Appends text when a file is attached; several pieces under one lock
  // stay together (the caller holds the lock through `Batch`).
  class Batch {
  public:
    explicit Batch(AppendBuffer &buffer) : owner(buffer), guard(buffer.lock) {}
    bool open() const { return owner.file != nullptr; }
    void add(const char *text) { owner.pending += text; }
    void add(const char *text, std::size_t length) { owner.pending.append(text, length); }
    void add(char character) { owner.pending += character; }
    // Characters known to be ASCII, from text of any width.
    template <class Char> void addAscii(const Char *text, std::size_t length) {
      const std::size_t start = owner.pending.size();
      owner.pending.resize(start + length);
      for (std::size_t i = 0; i < length; ++i)
        owner.pending[start + i] = static_cast<char>(text[i]);
    }
    ~Batch() {
      owner.waiting.store(!owner.pending.empty());
      if (writerDozing.load())
        wakeWriter();
    }

  private:
    AppendBuffer &owner;
    std::lock_guard<std::mutex> guard;
  };

  // Hands what is pending to the system in one write. False when the write
  // failed (the pending text is dropped).
  bool flush();
  // Flushes every buffer of the process that holds something; true when one
  // did.
  static bool flushAll();
  // Called as each host call ends, before a call waits or sleeps, and after
  // a line is logged outside any call: writes what is pending unless the
  // writer thread will.
  static void callEnds() {
    if (!writerRunning.load(std::memory_order_relaxed))
      flushAll();
  }
  // Starts the writer thread, unless CANSIMU_FLUSH is "call" or it runs
  // already. Without a thread (none could be started) each call writes.
  static void startWriter();
  // Stops the writer thread and writes what is pending; from then on each
  // call writes again.
  static void stopWriter();
  // Whether a write failed since the last call (then forgotten).
  bool takeFailure() { return failed.exchange(false); }

private:
  // Writes what is pending; the caller holds writeLock.
  bool writeOut();
  static void wakeWriter();
  static bool anyWaiting();

  static inline std::atomic<bool> writerRunning{false};
  // The writer sleeps without a timer after a quiet spell; the next line
  // wakes it.
  static inline std::atomic<bool> writerDozing{false};

  std::mutex lock;      // guards pending, file
  std::mutex writeLock; // one writer at a time, in order; taken before lock
  std::string pending;
  std::string spare; // the text being written, under writeLock
  std::FILE *file = nullptr;
  std::atomic<bool> open{false};
  std::atomic<bool> waiting{false};
  std::atomic<bool> failed{false};
};
