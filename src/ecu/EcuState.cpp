#include "ecu/EcuState.h"
#include "core/NumberText.h"

#include <algorithm>

namespace {

const unsigned char kReadById = 0x22, kWriteById = 0x2E;

EcuState::Bytes negative(unsigned char service, unsigned char code) {
  return {0x7F, service, code};
}

bool contains(const std::vector<unsigned char> &values, unsigned char value) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

ACE_WString listText(const std::vector<unsigned char> &values) {
  ACE_WString text;
  for (size_t i = 0; i < values.size(); ++i)
    text += (i == 0 ? ACE_WString() : ACE_WString(L" or ")) + byteText(values[i]);
  return text;
}

ACE_WString hexText(const std::vector<unsigned char> &bytes) {
  ACE_WString text;
  for (const unsigned char byte : bytes)
    text += byteText(byte);
  return text;
}

} // namespace

std::unique_ptr<EcuState> EcuState::read(const TDomData &document, bool entriesHaveRules,
                                         std::vector<StateProblem> &problems) {
  ACE_Array<TDomData> found;
  document.getSubNodesByTagName(ACE_WString(L"STATE"), found, true);
  if (found.size() == 0 && !entriesHaveRules)
    return nullptr;
  std::unique_ptr<EcuState> state(new EcuState);
  if (found.size() == 0)
    return state;
  const TDomData &node = found[0];
  if (found.size() > 1)
    problems.push_back({found[1], L"a second STATE element: only the first one counts"});
  ACE_WString text;
  node.getAttributeValue(ACE_WString(L"default"), text);
  if (text.length() != 0 && !readHexByte(text, state->defaultValue))
    problems.push_back({node, L"default=\"" + text + L"\" is not a session (a hex byte): 01"});
  state->current = state->defaultValue;
  text.clear();
  node.getAttributeValue(ACE_WString(L"s3"), text);
  if (text.length() != 0 && !readMilliseconds(text, state->s3Ms))
    problems.push_back({node, L"s3=\"" + text + L"\" is not a number of milliseconds: no S3"});
  state->security.read(node, problems);
  state->readDids(node, problems);
  return state;
}

void EcuState::readDids(const TDomData &state, std::vector<StateProblem> &problems) {
  ACE_Array<TDomData> found;
  state.getSubNodesByTagName(ACE_WString(L"DID"), found, true);
  for (size_t i = 0; i < found.size(); ++i) {
    const TDomData &node = found[i];
    ACE_WString text;
    Did did;
    Bytes identifier;
    node.getAttributeValue(ACE_WString(L"id"), text);
    if (!readHexBytes(text, identifier) || identifier.size() != 2) {
      problems.push_back({node, L"id=\"" + text + L"\" is not a two-byte identifier: ignored"});
      continue;
    }
    did.identifier = identifier[0] * 256u + identifier[1];
    text.clear();
    node.getAttributeValue(ACE_WString(L"value"), text);
    if (!readHexBytes(text, did.value) || did.value.empty()) {
      problems.push_back({node, L"value=\"" + text + L"\" is not hex bytes: DID ignored"});
      continue;
    }
    text.clear();
    node.getAttributeValue(ACE_WString(L"length"), text);
    unsigned length = 0;
    if (text.length() != 0 && (!readMilliseconds(text, length) || length != did.value.size())) {
      problems.push_back({node, L"length=\"" + text + L"\" does not match the value's " +
                                    decimalText(did.value.size()) + L" bytes: DID ignored"});
      continue;
    }
    text.clear();
    node.getAttributeValue(ACE_WString(L"write"), text);
    if (text == L"*")
      did.writable = true;
    else if (text.length() != 0) {
      did.writable = readHexByteList(text, did.writeSessions);
      if (!did.writable)
        problems.push_back(
            {node, L"write=\"" + text + L"\" is not * or a list of sessions: read-only"});
    }
    text.clear();
    node.getAttributeValue(ACE_WString(L"security"), text);
    if (text.length() != 0 && (!readHexByte(text, did.level) || did.level == 0))
      problems.push_back({node, L"security=\"" + text + L"\" is not a level: no level needed"});
    if (didAt({0, identifier[0], identifier[1]}, 1) != nullptr) {
      problems.push_back({node, L"DID " + hexText(identifier) + L" is declared twice: ignored"});
      continue;
    }
    dids.push_back(did);
  }
}

void EcuState::requestArrives(Clock::time_point now) {
  if (s3Ms != 0 && requestSeen && current != defaultValue &&
      now - lastRequest > std::chrono::milliseconds(s3Ms))
    enter(defaultValue);
  requestSeen = true;
  lastRequest = now;
}

void EcuState::enter(unsigned char session) {
  if (session == current)
    return;
  current = session;
  security.lock();
}

bool EcuState::serves(const Bytes &request, Bytes &response, Clock::time_point now) {
  if (security.handles(request)) {
    response = security.answer(request, current, now);
    return true;
  }
  if (request.size() >= 3 && request[0] == kReadById)
    return readDids(request, response);
  if (request.size() >= 3 && request[0] == kWriteById) {
    Did *did = didAt(request, 1);
    if (did == nullptr)
      return false;
    response = writeDid(*did, request);
    return true;
  }
  return false;
}

EcuState::Did *EcuState::didAt(const Bytes &request, size_t offset) {
  if (request.size() < offset + 2)
    return nullptr;
  const unsigned identifier = request[offset] * 256u + request[offset + 1];
  for (Did &did : dids)
    if (did.identifier == identifier)
      return &did;
  return nullptr;
}

// A read of declared identifiers only: a request that also names one the
// state does not know is left to the scenario's entries.
bool EcuState::readDids(const Bytes &request, Bytes &response) {
  if ((request.size() - 1) % 2 != 0)
    return false;
  Bytes positive{0x62};
  for (size_t offset = 1; offset < request.size(); offset += 2) {
    const Did *did = didAt(request, offset);
    if (did == nullptr)
      return false;
    positive.push_back(request[offset]);
    positive.push_back(request[offset + 1]);
    positive.insert(positive.end(), did->value.begin(), did->value.end());
  }
  response = positive;
  return true;
}

EcuState::Bytes EcuState::writeDid(Did &did, const Bytes &request) {
  if (!did.writable || (!did.writeSessions.empty() && !contains(did.writeSessions, current)))
    return negative(kWriteById, 0x31);
  if (request.size() - 3 != did.value.size())
    return negative(kWriteById, 0x13);
  if (did.level != 0 && !security.unlocked(did.level))
    return negative(kWriteById, 0x33);
  did.value.assign(request.begin() + 3, request.end());
  return {0x6E, request[1], request[2]};
}

bool EcuState::admits(const EntryRules &rules, Refusal &refusal) const {
  if (!rules.sessions.empty() && !contains(rules.sessions, current)) {
    refusal.reason =
        L"needs session " + listText(rules.sessions) + L", ECU in " + byteText(current);
    refusal.code = rules.refusalCode >= 0 ? static_cast<unsigned char>(rules.refusalCode) : 0x7F;
    return false;
  }
  if (rules.level != 0 && !security.unlocked(rules.level)) {
    refusal.reason =
        L"needs security level " + byteText(rules.level) + L" unlocked, " +
        (security.unlockedNow() != 0 ? L"level " + byteText(security.unlockedNow()) + L" is"
                                     : ACE_WString(L"none is"));
    refusal.code = rules.refusalCode >= 0 ? static_cast<unsigned char>(rules.refusalCode) : 0x33;
    return false;
  }
  return true;
}

void EcuState::answered(const EntryRules &rules, const ACE_WString &response) {
  if (rules.enters < 0)
    return;
  // A negative answer leaves the session as it is.
  if (response.length() >= 2 && response[0] == L'7' && response[1] == L'F')
    return;
  enter(static_cast<unsigned char>(rules.enters));
}

ACE_WString EcuState::describe() const {
  ACE_WString text = L"session " + byteText(current);
  const ACE_WString levels = security.describe(Clock::now());
  if (levels.length() != 0)
    text += L"; " + levels;
  for (const Did &did : dids) {
    const unsigned char id[2] = {static_cast<unsigned char>(did.identifier >> 8),
                                 static_cast<unsigned char>(did.identifier & 0xFF)};
    text += L"; " + byteText(id[0]) + byteText(id[1]) + L"=" + hexText(did.value);
  }
  return text;
}
