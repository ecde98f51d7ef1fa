#include "files/XmlSource.h"

#include "files/Paths.h"
#include "platform/CodePage.h"

#include <algorithm>
#include <cstdio>
#include <pugixml.hpp>

namespace {
// The offset of every line's first character in the file.
bool readLineStarts(const std::string &path, std::vector<long> &starts) {
  FILE *file = std::fopen(path.c_str(), "rb");
  if (file == nullptr)
    return false;
  starts.assign(1, 0);
  long offset = 0;
  for (int c; (c = std::fgetc(file)) != EOF; ++offset)
    if (c == '\n')
      starts.push_back(offset + 1);
  std::fclose(file);
  return true;
}
} // namespace

XmlSource::Outcome XmlSource::load(const std::string &path) {
  if (!fileReadable(path) || !readLineStarts(path, lineStarts_))
    return Outcome::Unreadable;
  path_ = path;
  problem_ = TDomData::LoadProblem();
  return document_.load(toWideString(path.c_str()), &problem_, nullptr) ? Outcome::Read
                                                                        : Outcome::NotXml;
}

std::vector<TDomData> XmlSource::elements(const TDomData &node, const char *tag) {
  ACE_Array<TDomData> found;
  node.getSubNodesByTagName(toWideString(tag), found, true);
  return std::vector<TDomData>(found.begin(), found.end());
}

std::string XmlSource::attribute(const TDomData &element, const char *name) {
  ACE_WString value;
  element.getAttributeValue(toWideString(name), value);
  return toAnsiString(value).c_str();
}

std::string XmlSource::content(const TDomData &element) {
  ACE_WString text;
  element.getContent(text);
  return toAnsiString(text).c_str();
}

unsigned XmlSource::line(const TDomData &element) const { return lineOf(element.sourceOffset()); }

unsigned XmlSource::lineOf(long offset) const {
  if (offset < 0 || lineStarts_.empty())
    return 0;
  return static_cast<unsigned>(std::upper_bound(lineStarts_.begin(), lineStarts_.end(), offset) -
                               lineStarts_.begin());
}

std::vector<XmlSource::Tag> XmlSource::tags() const {
  // The DOM reader finds elements by name only: the file is parsed again,
  // by the same parser, to list every name it holds.
  pugi::xml_document document;
  std::vector<Tag> found;
  if (!document.load_file(path_.c_str()))
    return found;
  struct Walker : pugi::xml_tree_walker {
    Walker(const XmlSource &source, std::vector<Tag> &found) : source_(source), found_(found) {}
    bool for_each(pugi::xml_node &node) override {
      if (node.type() == pugi::node_element)
        found_.push_back({node.name(), source_.lineOf(node.offset_debug())});
      return true;
    }
    const XmlSource &source_;
    std::vector<Tag> &found_;
  } walker(*this, found);
  document.traverse(walker);
  return found;
}
