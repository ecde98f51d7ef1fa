// Diagnostic frames for people: the bytes in hex, the text they carry, and
// what they mean (the service asked, a positive or a negative response).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

// The longest request a diagnostic channel carries (ISO-TP's limit).
constexpr size_t kMaxRequestBytes = 4095;

// Reads hex text as a tester types it ("22F190", either case, no spaces).
// False, with the reason in `why`, for an empty, odd-length or non-hex text
// or one longer than kMaxRequestBytes.
bool parseHexBytes(const std::string &text, Bytes &bytes, std::string &why);

// The requests a list of words asks for: each word one request, except that
// words of one byte each ("22 F1 90", as requests are shown) make one.
std::vector<std::string> requestTexts(const std::vector<std::string> &words);

// "0x1F"
std::string hexByte(uint8_t byte);
// A CAN identifier as benches write it: "7E8".
std::string canIdText(uint32_t id);

// "22 F1 90"; empty for no bytes.
std::string spacedHex(const uint8_t *bytes, size_t count);
inline std::string spacedHex(const Bytes &bytes) { return spacedHex(bytes.data(), bytes.size()); }

// The service a request asks for ("ReadDataByIdentifier"); empty when its
// first byte names no service.
std::string requestMeaning(const uint8_t *bytes, size_t count);
// What an answer says: "positive ReadDataByIdentifier", "negative
// CommunicationControl: serviceNotSupported (0x11)"; empty when unknown.
std::string answerMeaning(const uint8_t *bytes, size_t count);

// An answer as lines at most `width` columns wide where they can be: `head`
// with the bytes and their meaning; a long frame, or one that carries text,
// gets `head` and the meaning, then 16 bytes a line with their printable
// characters beside them ("62 F1 90 56 46 ...  b..VF1SIMU000000").
std::vector<std::string> answerLines(const std::string &head, const uint8_t *bytes, size_t count,
                                     size_t width);
