#include "files/Json.h"

#include <cstdlib>
#include <stdexcept>

namespace {

class Parser {
public:
  explicit Parser(const std::string &text) : text_(text) {}

  JsonValue document() {
    JsonValue value = parseValue();
    skipSpace();
    if (at_ != text_.size())
      fail("text after the value");
    return value;
  }

private:
  [[noreturn]] void fail(const std::string &what) const {
    throw std::runtime_error("not valid JSON at offset " + std::to_string(at_) + ": " + what);
  }
  void skipSpace() {
    while (at_ < text_.size() &&
           (text_[at_] == ' ' || text_[at_] == '\n' || text_[at_] == '\r' || text_[at_] == '\t'))
      ++at_;
  }
  bool take(char c) {
    skipSpace();
    if (at_ < text_.size() && text_[at_] == c) {
      ++at_;
      return true;
    }
    return false;
  }
  void expect(char c) {
    if (!take(c))
      fail(std::string("expected '") + c + "'");
  }
  bool word(const char *literal) {
    const std::string w(literal);
    if (text_.compare(at_, w.size(), w) != 0)
      return false;
    at_ += w.size();
    return true;
  }

  JsonValue parseValue() {
    skipSpace();
    if (at_ >= text_.size())
      fail("unexpected end");
    JsonValue value;
    const char c = text_[at_];
    if (c == '{') {
      ++at_;
      value.type = JsonValue::Type::Object;
      if (take('}'))
        return value;
      do {
        skipSpace();
        std::string name = parseString();
        expect(':');
        value.members.emplace_back(std::move(name), parseValue());
      } while (take(','));
      expect('}');
    } else if (c == '[') {
      ++at_;
      value.type = JsonValue::Type::Array;
      if (take(']'))
        return value;
      do
        value.items.push_back(parseValue());
      while (take(','));
      expect(']');
    } else if (c == '"') {
      value.type = JsonValue::Type::String;
      value.text = parseString();
    } else if (word("true") || word("false")) {
      value.type = JsonValue::Type::Boolean;
      value.boolean = text_[at_ - 1] == 'e' && text_[at_ - 2] == 'u';
    } else if (word("null")) {
    } else {
      const char *start = text_.c_str() + at_;
      char *end = nullptr;
      value.type = JsonValue::Type::Number;
      value.number = std::strtod(start, &end);
      if (end == start)
        fail("unexpected character");
      at_ += static_cast<size_t>(end - start);
    }
    return value;
  }

  std::string parseString() {
    if (at_ >= text_.size() || text_[at_] != '"')
      fail("expected a string");
    ++at_;
    std::string out;
    while (at_ < text_.size() && text_[at_] != '"') {
      char c = text_[at_++];
      if (c != '\\') {
        out += c;
        continue;
      }
      if (at_ >= text_.size())
        break;
      c = text_[at_++];
      switch (c) {
      case 'n':
        out += '\n';
        break;
      case 't':
        out += '\t';
        break;
      case 'r':
        out += '\r';
        break;
      case 'b':
        out += '\b';
        break;
      case 'f':
        out += '\f';
        break;
      case 'u': {
        if (at_ + 4 > text_.size())
          fail("short \\u escape");
        const unsigned long code = std::strtoul(text_.substr(at_, 4).c_str(), nullptr, 16);
        at_ += 4;
        appendUtf8(out, code);
        break;
      }
      default:
        out += c;
      }
    }
    if (at_ >= text_.size())
      fail("unterminated string");
    ++at_;
    return out;
  }

  static void appendUtf8(std::string &out, unsigned long code) {
    if (code < 0x80) {
      out += static_cast<char>(code);
    } else if (code < 0x800) {
      out += static_cast<char>(0xC0 | (code >> 6));
      out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
      out += static_cast<char>(0xE0 | (code >> 12));
      out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
      out += static_cast<char>(0x80 | (code & 0x3F));
    }
  }

  const std::string &text_;
  size_t at_ = 0;
};

} // namespace

const JsonValue &JsonValue::operator[](const char *name) const {
  static const JsonValue none;
  for (const auto &member : members)
    if (member.first == name)
      return member.second;
  return none;
}

JsonValue parseJson(const std::string &text) { return Parser(text).document(); }
