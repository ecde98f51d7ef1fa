// ACE, initialised for the program's own use of the library's code (its XML
// reader, its scenario table) for as long as this object lives.
#pragma once

class AceRuntime {
public:
  AceRuntime();
  ~AceRuntime();
  AceRuntime(const AceRuntime &) = delete;
  AceRuntime &operator=(const AceRuntime &) = delete;
};
