// Pieces of log lines that several subsystems write the same way.
#pragma once

#include <ace/Basic_Types.h>
#include <ace/SString.h>

#include <cstddef>
#include <initializer_list>

// A CAN identifier as "%x" writes it: lower-case hex, no leading zeros.
ACE_WString identifierText(ACE_UINT32 id);

// The line as a formatting buffer of `capacity` wide characters holds it:
// cut to its first capacity - 1 characters.
ACE_WString fittedLine(const ACE_WString &line, size_t capacity);

// A piece of a log line: a literal or a string, not copied.
struct LinePiece {
  LinePiece(const ACE_WCHAR_T *literal);
  LinePiece(const ACE_WString &text) : text(text.fast_rep()), length(text.length()) {}
  LinePiece(const ACE_WCHAR_T *text, size_t length) : text(text), length(length) {}
  const ACE_WCHAR_T *text;
  size_t length;
};

// The pieces joined and fitted as above, in one allocation: lines written
// for every request are not built up piece by piece.
ACE_WString fittedLine(std::initializer_list<LinePiece> pieces, size_t capacity);

// The pieces joined, whatever their length.
ACE_WString joinedLine(std::initializer_list<LinePiece> pieces);

// A number written out on the stack, to be a piece of a line: decimal, or
// hex as identifierText writes it.
class NumberPiece {
public:
  static NumberPiece decimal(unsigned long value);
  static NumberPiece hex(ACE_UINT32 value);
  operator LinePiece() const { return LinePiece(text + start, kSize - 1 - start); }

private:
  static const size_t kSize = 24;
  ACE_WCHAR_T text[kSize];
  size_t start = kSize - 1;
};
