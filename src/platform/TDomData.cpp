#include "platform/TDomData.h"

#include "platform/CodePage.h"
#include "platform/FileSystem.h"
#include "platform/Utf8Text.h"

#include <algorithm>
#include <cstring>
#include <new>
#include <string>
#include <vector>

namespace {

// Replaces `out` with the UTF-8 text. Short ASCII text, what scenarios and
// configurations hold, is widened on the stack and copied once; the rest
// goes through pugixml's conversion.
void assignWide(ACE_WString &out, const char *utf8) {
  ACE_WCHAR_T buffer[256];
  size_t length = 0;
  for (; utf8[length] != '\0' && length < sizeof buffer / sizeof buffer[0]; ++length) {
    if (static_cast<unsigned char>(utf8[length]) >= 0x80)
      break;
    buffer[length] = static_cast<ACE_WCHAR_T>(utf8[length]);
  }
  if (utf8[length] == '\0')
    out.set(buffer, length, true);
  else
    out = wideOfUtf8(utf8);
}

// A tag name as pugixml spells it, in UTF-8.
std::string utf8TagName(const ACE_WString &tagName) {
  std::string name(tagName.length(), '\0');
  for (size_t i = 0; i < tagName.length(); ++i) {
    if (tagName[i] >= 0x80)
      return utf8Of(tagName);
    name[i] = static_cast<char>(tagName[i]);
  }
  return name;
}

} // namespace

TDomData::TDomData(std::shared_ptr<pugi::xml_document> document, pugi::xml_node node)
    : document_(std::move(document)), node_(node) {}

bool TDomData::load(const ACE_WString &path) { return load(path, nullptr, nullptr); }

namespace {
void findLineStarts(const std::vector<char> &text, std::vector<size_t> &starts) {
  starts.assign(1, 0);
  if (text.empty())
    return;
  const char *begin = text.data();
  const char *end = begin + text.size();
  for (const char *at = begin; (at = static_cast<const char *>(std::memchr(at, '\n', end - at)));)
    starts.push_back(static_cast<size_t>(++at - begin));
}

unsigned lineOf(const std::vector<size_t> &starts, size_t offset) {
  return static_cast<unsigned>(std::upper_bound(starts.begin(), starts.end(), offset) -
                               starts.begin());
}
} // namespace

bool TDomData::load(const ACE_WString &path, LoadProblem *problem,
                    std::vector<size_t> *lineStarts) {
  // The document is parsed in the buffer the file was read into, which it
  // keeps: a scenario of several megabytes is not copied once more.
  struct ParsedFile {
    std::vector<char> text;
    pugi::xml_document document;
  };
  auto parsed = std::make_shared<ParsedFile>();
  // A file found only under its ANSI name (Windows) is read by that name.
  const bool read = readWholeFile(path.c_str(), parsed->text) ||
                    readWholeAnsiFile(toAnsi(path.c_str()).get(), parsed->text);
  std::vector<size_t> localStarts;
  std::vector<size_t> &starts = lineStarts != nullptr ? *lineStarts : localStarts;
  // Lines are counted before the parse, which rewrites the text in place.
  if (read && (lineStarts != nullptr || problem != nullptr))
    findLineStarts(parsed->text, starts);
  pugi::xml_parse_result result;
  if (read && !parsed->text.empty())
    result = parsed->document.load_buffer_inplace(parsed->text.data(), parsed->text.size());
  const bool loaded =
      read && !parsed->text.empty() && result && parsed->document.document_element();
  if (!loaded && problem != nullptr) {
    problem->unreadable = !read;
    problem->line = 0;
    if (!read)
      problem->message = "the file cannot be read";
    else if (parsed->text.empty())
      problem->message = "the file is empty";
    else if (!result) {
      problem->message = result.description();
      problem->line = result.offset >= 0 ? lineOf(starts, static_cast<size_t>(result.offset)) : 0;
    } else
      problem->message = "no root element";
  }
  if (!loaded) {
    document_.reset();
    node_ = pugi::xml_node();
    return false;
  }
  node_ = parsed->document;
  document_ = std::shared_ptr<pugi::xml_document>(parsed, &parsed->document);
  return true;
}

bool TDomData::isNull() const { return !node_; }

bool TDomData::getSubNodesByTagName(const ACE_WString &tagName, ACE_Array<TDomData> &out,
                                    bool) const {
  // pugixml walks the subtree itself, without recursion (a deeply nested
  // document cannot exhaust the stack), and hands over each node.
  class Collector : public pugi::xml_tree_walker {
  public:
    Collector(const std::string &name, const TDomData &owner, ACE_Array<TDomData> &out)
        : name_(name), owner_(owner), out_(out) {}
    bool for_each(pugi::xml_node &node) override {
      if (node.type() != pugi::node_element || std::strcmp(name_.c_str(), node.name()) != 0)
        return true;
      // The array grows by doubling: a document's thousands of events are
      // not copied over once per element found. ACE reports an array that
      // could not grow only through the result; a search that found less
      // than there is must not look complete.
      if (count == out_.max_size() && out_.max_size(count < 4 ? 4 : 2 * count) != 0)
        throw std::bad_alloc();
      if (out_.size(count + 1) != 0)
        throw std::bad_alloc();
      out_[count++] = TDomData(owner_.document_, node);
      return true;
    }
    size_t count = 0;

  private:
    const std::string &name_;
    const TDomData &owner_;
    ACE_Array<TDomData> &out_;
  };
  out.size(0);
  if (!node_)
    return false;
  const std::string name = utf8TagName(tagName);
  Collector collector(name, *this, out);
  pugi::xml_node root = node_;
  root.traverse(collector);
  return collector.count != 0;
}

bool TDomData::getFirstChildElement(TDomData &out, bool) const {
  pugi::xml_node child = node_ ? node_.first_child() : pugi::xml_node();
  while (child && child.type() != pugi::node_element)
    child = child.next_sibling();
  out = child ? TDomData(document_, child) : TDomData();
  return static_cast<bool>(child);
}

bool TDomData::getContent(ACE_WString &out) const {
  // The usual single piece of text is converted where pugixml keeps it;
  // several pieces are joined first.
  pugi::xml_node first;
  std::string joined;
  bool several = false;
  if (node_)
    for (pugi::xml_node child = node_.first_child(); child; child = child.next_sibling()) {
      if (child.type() != pugi::node_pcdata && child.type() != pugi::node_cdata)
        continue;
      if (!first) {
        first = child;
        continue;
      }
      if (!several)
        joined = first.value();
      several = true;
      joined += child.value();
    }
  assignWide(out, several ? joined.c_str() : first ? first.value() : "");
  return static_cast<bool>(node_);
}

bool TDomData::getAttributeValue(const ACE_WString &name, ACE_WString &out) const {
  const pugi::xml_attribute attribute =
      node_ ? node_.attribute(utf8Of(name).c_str()) : pugi::xml_attribute();
  assignWide(out, attribute ? attribute.value() : "");
  return static_cast<bool>(attribute);
}

unsigned TDomData::sourceLine(const std::vector<size_t> &lineStarts) const {
  const long offset = sourceOffset();
  return offset < 0 || lineStarts.empty() ? 0 : lineOf(lineStarts, static_cast<size_t>(offset));
}

long TDomData::sourceOffset() const { return node_ ? static_cast<long>(node_.offset_debug()) : -1; }
