// A small JSON reader for the files the library writes (the session report):
// the whole text parsed into a tree of values.
#pragma once

#include <string>
#include <utility>
#include <vector>

struct JsonValue {
  enum class Type { Null, Boolean, Number, String, Array, Object };
  Type type = Type::Null;
  bool boolean = false;
  double number = 0;
  std::string text;
  std::vector<JsonValue> items;
  std::vector<std::pair<std::string, JsonValue>> members;

  // The member of that name, or a null value.
  const JsonValue &operator[](const char *name) const;
  // The number as a whole count (0 when it is not a number).
  unsigned long long count() const {
    return type == Type::Number ? static_cast<unsigned long long>(number) : 0;
  }
};

// Parses `text`; throws std::runtime_error naming the offset of the first
// fault.
JsonValue parseJson(const std::string &text);
