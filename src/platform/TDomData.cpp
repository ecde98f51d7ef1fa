#include "platform/TDomData.h"

#include "platform/CodePage.h"
#include "platform/FileSystem.h"

#include <new>
#include <string>
#include <vector>

namespace {

std::string utf8Of(const ACE_WString &text) {
  return pugi::as_utf8(std::wstring(text.c_str(), text.length()));
}

ACE_WString wideOf(const char *utf8) {
  const std::wstring wide = pugi::as_wide(utf8);
  return ACE_WString(wide.c_str(), wide.size());
}

// Next node in document order within `root`'s subtree, without recursion, so
// a deeply nested document cannot exhaust the stack.
pugi::xml_node nextInSubtree(pugi::xml_node node, pugi::xml_node root) {
  if (node.first_child())
    return node.first_child();
  while (node && node != root) {
    if (node.next_sibling())
      return node.next_sibling();
    node = node.parent();
  }
  return pugi::xml_node();
}

} // namespace

TDomData::TDomData(std::shared_ptr<pugi::xml_document> document, pugi::xml_node node)
    : document_(std::move(document)), node_(node) {}

bool TDomData::load(const ACE_WString &path) {
  auto document = std::make_shared<pugi::xml_document>();
  std::vector<char> content;
  // A file found only under its ANSI name (Windows) is read by that name.
  const bool read = readWholeFile(path.c_str(), content) ||
                    readWholeAnsiFile(toAnsi(path.c_str()).get(), content);
  const bool parsed = read && !content.empty() &&
                      document->load_buffer(content.data(), content.size()) &&
                      document->document_element();
  if (!parsed) {
    document_.reset();
    node_ = pugi::xml_node();
    return false;
  }
  node_ = *document;
  document_ = std::move(document);
  return true;
}

bool TDomData::isNull() const { return !node_; }

bool TDomData::getSubNodesByTagName(const ACE_WString &tagName, ACE_Array<TDomData> &out,
                                    bool) const {
  std::vector<pugi::xml_node> found;
  if (node_) {
    const std::string name = utf8Of(tagName);
    for (pugi::xml_node n = nextInSubtree(node_, node_); n; n = nextInSubtree(n, node_))
      if (n.type() == pugi::node_element && name == n.name())
        found.push_back(n);
  }
  // ACE reports an array that could not grow only through size()'s result.
  if (out.size(found.size()) != 0)
    throw std::bad_alloc();
  for (size_t i = 0; i < found.size(); ++i)
    out[i] = TDomData(document_, found[i]);
  return !found.empty();
}

bool TDomData::getFirstChildElement(TDomData &out, bool) const {
  pugi::xml_node child = node_ ? node_.first_child() : pugi::xml_node();
  while (child && child.type() != pugi::node_element)
    child = child.next_sibling();
  out = child ? TDomData(document_, child) : TDomData();
  return static_cast<bool>(child);
}

bool TDomData::getContent(ACE_WString &out) const {
  std::string text;
  if (node_)
    for (pugi::xml_node child = node_.first_child(); child; child = child.next_sibling())
      if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata)
        text += child.value();
  out = wideOf(text.c_str());
  return static_cast<bool>(node_);
}

bool TDomData::getAttributeValue(const ACE_WString &name, ACE_WString &out) const {
  const pugi::xml_attribute attribute =
      node_ ? node_.attribute(utf8Of(name).c_str()) : pugi::xml_attribute();
  out = attribute ? wideOf(attribute.value()) : ACE_WString();
  return static_cast<bool>(attribute);
}

long TDomData::sourceOffset() const { return node_ ? static_cast<long>(node_.offset_debug()) : -1; }
