// Adds an element to a bench file in place, the way a tester's editor saves
// it: the rest of the text as it was, and a modification time that moves on
// (the library compares whole seconds), so the next read of the bench sees
// the change.
#pragma once

#include <string>

// Inserts `element` (one line of XML) as the last child of the root element
// of the XML file `path`, indented like its siblings, and returns its line.
// Throws SetupError when the file cannot be read or written.
unsigned appendElement(const std::string &path, const std::string &element);
