// A DOM node held by value, over pugixml. Copies share the loaded document,
// so nodes can be kept in arrays and read in place. Text crosses this class
// as wide strings.
#pragma once

#include <ace/Containers_T.h>
#include <ace/SString.h>

#include <memory>
#include <pugixml.hpp>
#include <string>
#include <vector>

class TDomData {
public:
  // An empty node: isNull() is true until a document is loaded into it.
  TDomData() = default;

  // Parses the file at a wide path into this node as a document. On any
  // failure (missing file, not well-formed XML) the node is left null.
  bool load(const ACE_WString &path);

  // What a failed load met: an unreadable file (line 0) or the parser's
  // complaint and the line it stopped at (from 1).
  struct LoadProblem {
    bool unreadable = false;
    unsigned line = 0;
    std::string message;
  };
  // The same load, telling why it failed in `problem` and, when `lineStarts`
  // is given, the offset of every line's first character in the file, so
  // that sourceLine() can name an element's line.
  bool load(const ACE_WString &path, LoadProblem *problem, std::vector<size_t> *lineStarts);
  // The line (from 1) of the element, with the line starts of its load; 0
  // when unknown.
  unsigned sourceLine(const std::vector<size_t> &lineStarts) const;

  // True when the node holds no document or element.
  bool isNull() const;

  // Fills `out` with every element named `tagName` below this node, in
  // document order. `deep` is accepted for the interface; the search always
  // covers the whole subtree. True when at least one element was found.
  bool getSubNodesByTagName(const ACE_WString &tagName, ACE_Array<TDomData> &out, bool deep) const;

  // Gives the node's first child element (a null node when it has none).
  bool getFirstChildElement(TDomData &out, bool elementsOnly) const;

  // Replaces `out` with the element's text: its text and CDATA children,
  // concatenated, untrimmed. Empty for a null node.
  bool getContent(ACE_WString &out) const;

  // Replaces `out` with the named attribute's value; leaves it empty when
  // the attribute is missing. True when the attribute exists.
  bool getAttributeValue(const ACE_WString &name, ACE_WString &out) const;

  // Where the node starts in the loaded file, in characters from the
  // file's beginning, for messages that name its line; -1 when unknown.
  long sourceOffset() const;

private:
  TDomData(std::shared_ptr<pugi::xml_document> document, pugi::xml_node node);

  std::shared_ptr<pugi::xml_document> document_;
  pugi::xml_node node_;
};
