#include "files/BenchEdit.h"

#include "Errors.h"

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace fs = std::filesystem;

namespace {

std::string readText(const fs::path &path) {
  std::ifstream in(path, std::ios::binary);
  if (!in)
    throw SetupError("cannot read " + path.string());
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

// Where the root element's content ends: before its closing tag, or for an
// empty root written "<BENCH/>", before its "/>" (then `selfClosed` is set).
// Comments and white space after the root are skipped.
size_t rootEnd(const std::string &text, bool &selfClosed, std::string &rootName) {
  size_t end = text.size();
  for (;;) {
    end = text.find_last_not_of(" \t\r\n", end == 0 ? 0 : end - 1);
    if (end == std::string::npos || text[end] != '>')
      return std::string::npos;
    if (end < 2 || text.compare(end - 2, 3, "-->") != 0)
      break;
    end = text.rfind("<!--", end);
    if (end == std::string::npos)
      return std::string::npos;
  }
  selfClosed = text[end - 1] == '/';
  const size_t open = text.rfind('<', end);
  if (open == std::string::npos)
    return std::string::npos;
  if (selfClosed) {
    const size_t nameEnd = text.find_first_of(" \t\r\n/", open + 1);
    rootName = text.substr(open + 1, nameEnd - open - 1);
    return end - 1;
  }
  return text.compare(open, 2, "</") == 0 ? open : std::string::npos;
}

size_t lineStartOf(const std::string &text, size_t at) {
  const size_t newline = at == 0 ? std::string::npos : text.rfind('\n', at - 1);
  return newline == std::string::npos ? 0 : newline + 1;
}

// Writes beside the file, then replaces it, so that a host reading the
// bench meanwhile reads the old text or the new one, never half of it.
void replaceText(const fs::path &path, const std::string &text) {
  const fs::path temporary = path.string() + ".cansimu-new";
  {
    std::ofstream out(temporary, std::ios::binary | std::ios::trunc);
    out << text;
    if (!out.flush())
      throw SetupError("cannot write " + temporary.string());
  }
  std::error_code error;
  fs::permissions(temporary, fs::status(path, error).permissions(), error);
  fs::rename(temporary, path, error);
  if (error) {
    fs::remove(temporary, error);
    throw SetupError("cannot replace " + path.string());
  }
}

} // namespace

unsigned appendElement(const std::string &given, const std::string &element) {
  std::error_code error;
  // A bench reached through a link is edited where it lives.
  const fs::path path =
      fs::is_symlink(given, error) ? fs::canonical(given, error) : fs::path(given);
  const auto before = fs::last_write_time(path, error);
  std::string text = readText(path);

  bool selfClosed = false;
  std::string rootName;
  const size_t end = rootEnd(text, selfClosed, rootName);
  if (end == std::string::npos)
    throw SetupError(given + " has no root element to add to");
  const std::string newline = text.find("\r\n") != std::string::npos ? "\r\n" : "\n";
  // The element goes one step deeper than the line the root ends on.
  const size_t lineStart = lineStartOf(text, end);
  const size_t textStart = text.find_first_not_of(" \t", lineStart);
  const std::string indent = text.substr(lineStart, textStart - lineStart);
  const bool ownLine = !selfClosed && textStart == end;
  const std::string line = indent + "  " + element + newline;
  if (ownLine)
    text.insert(lineStart, line);
  else if (selfClosed)
    text.replace(end, 2, ">" + newline + line + indent + "</" + rootName + ">");
  else
    text.insert(end, newline + line + indent);
  const auto lines = std::count(text.begin(), text.begin() + lineStart, '\n');
  replaceText(path, text);

  // Saved within the second of the last save, the file would look unchanged.
  const auto second = std::chrono::floor<std::chrono::seconds>(before);
  if (std::chrono::floor<std::chrono::seconds>(fs::last_write_time(path, error)) <= second)
    fs::last_write_time(path, second + std::chrono::seconds(1), error);
  return static_cast<unsigned>(lines) + (ownLine ? 1 : 2);
}
