// Allocator for the entries of a scenario's request table and their pattern
// texts. It carves them one after another from blocks that double in size
// (4 KiB up to 256 KiB), so a load of
// thousands of requests makes a few allocations instead of two per request,
// and the entries lie close together in the order they were added. Single
// frees do nothing: the table's memory is given back all at once by
// release(), when the table is emptied.
#pragma once

#include <ace/Malloc_Allocator.h>

#include <memory>
#include <vector>

class EntryArena : public ACE_New_Allocator {
public:
  EntryArena() = default;
  ~EntryArena() override = default;
  EntryArena(const EntryArena &) = delete;
  EntryArena &operator=(const EntryArena &) = delete;

  // Null when the memory cannot be had (as ACE's allocators answer).
  void *malloc(size_t nbytes) override;
  void *calloc(size_t nbytes, char initial_value = '\0') override;
  void *calloc(size_t n_elem, size_t elem_size, char initial_value = '\0') override;
  // Nothing is given back before release().
  void free(void *ptr) override;

  // Gives back every block. Nothing allocated here may be used afterwards.
  void release();

private:
  std::vector<std::unique_ptr<char[]>> blocks_;
  char *next_ = nullptr;
  size_t left_ = 0;
  size_t nextBlockSize_ = 0;
};
