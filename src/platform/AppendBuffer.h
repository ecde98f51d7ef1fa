// Text on its way to an append-only file (the log file, the bus trace):
// collected in memory and handed to the system in one write at the end of
// each host call, before a call waits or sleeps, and when the file is
// closed, so that a line costs no system call of its own. A host that
// crashes loses at most the lines of the call it was in.
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
  // (null: no file) from now on. Gives back the previous file, not closed.
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
    ~Batch() { owner.waiting.store(!owner.pending.empty(), std::memory_order_release); }

  private:
    AppendBuffer &owner;
    std::lock_guard<std::mutex> guard;
  };

  // Hands what is pending to the system in one write. False when the write
  // failed (the pending text is dropped).
  bool flush();
  // Flushes every buffer of the process that holds something: called at the
  // end of each host call, and before a call waits or sleeps.
  static void flushAll();
  // Whether a write failed since the last call (then forgotten).
  bool takeFailure() { return failed.exchange(false); }

private:
  bool flushLocked();

  std::mutex lock;
  std::string pending;
  std::FILE *file = nullptr;
  std::atomic<bool> open{false};
  std::atomic<bool> waiting{false};
  std::atomic<bool> failed{false};
};
