// An XML file read through the library's own DOM reader (the one that reads
// benches and scenarios for a host), with each element's line for messages.
#pragma once

#include "platform/TDomData.h"

#include <string>
#include <vector>

class XmlSource {
public:
  enum class Outcome { Read, Unreadable, NotXml };

  // Reads the file at `path` (as the user wrote it).
  Outcome load(const std::string &path);

  const TDomData &document() const { return document_; }
  // Why the last load found no XML: the parser's message and line.
  const TDomData::LoadProblem &problem() const { return problem_; }
  // Every `tag` element below `node`, in document order.
  static std::vector<TDomData> elements(const TDomData &node, const char *tag);
  std::vector<TDomData> elements(const char *tag) const { return elements(document_, tag); }
  // An attribute's value (empty when missing) and an element's text, as the
  // library reads them, in the ANSI code page.
  static std::string attribute(const TDomData &element, const char *name);
  static std::string content(const TDomData &element);
  // The line an element starts on, from 1; 0 when unknown.
  unsigned line(const TDomData &element) const;

  struct Tag {
    std::string name;
    unsigned line;
  };
  // Every element of the file, in document order, by tag name and line.
  std::vector<Tag> tags() const;

private:
  unsigned lineOf(long offset) const;

  std::string path_;
  TDomData document_;
  std::vector<long> lineStarts_;
  TDomData::LoadProblem problem_;
};
