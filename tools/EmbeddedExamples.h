// The files of examples/, compiled into the program so that an installed
// cansimu can run its demo and hand out the bench without the source tree.
// The build generates the definitions from the folder.
#pragma once

#include <cstddef>

struct EmbeddedFile {
  const char *name;
  const unsigned char *data;
  size_t size;
};

extern const EmbeddedFile kEmbeddedExamples[];
extern const size_t kEmbeddedExampleCount;
