// Security access (service 27) of one ECU, declared in its scenario with
// SECURITY elements: per level its seeds (handed out in rotation), the key
// it expects (fixed, or a rule over the seed), how many wrong keys it takes
// before it locks out and for how long. Level n is asked for a seed with
// 27 n (n odd) and sent its key with 27 n+1. The owner serialises calls.
#pragma once

#include "ecu/EntryRules.h"

#include <ace/SString.h>

#include <chrono>
#include <vector>

class SecurityAccess {
public:
  using Clock = std::chrono::steady_clock;
  using Bytes = std::vector<unsigned char>;

  // How a level's key is made: the fixed bytes, or the seed XOR'd with,
  // added to (big-endian, carries dropped at the top) or complemented.
  struct KeyRule {
    enum class Kind { Fixed, Xor, Add, Not } kind = Kind::Fixed;
    Bytes operand;
    // The key for `seed`.
    Bytes keyFor(const Bytes &seed) const;
  };

  // Reads `rule` ("11223344", "xor:FFFFFFFF", "add:00000001", "not") for
  // seeds of `seedLength` bytes; false with `why` when it does not parse or
  // does not fit the seed.
  static bool readKeyRule(const ACE_WString &text, size_t seedLength, KeyRule &rule,
                          ACE_WString &why);

  // Adds the levels of every SECURITY element below `state`; bad ones are
  // left out and reported in `problems`.
  void read(const TDomData &state, std::vector<StateProblem> &problems);
  bool empty() const { return levels.empty(); }

  // Whether `request` is a seed or key request of a declared level.
  bool handles(const Bytes &request) const;
  // The answer to such a request in `session`, at `now`.
  Bytes answer(const Bytes &request, unsigned char session, Clock::time_point now);
  // Whether `level` is unlocked.
  bool unlocked(unsigned char level) const { return level != 0 && unlockedLevel == level; }
  unsigned char unlockedNow() const { return unlockedLevel; }
  // Locks every level again and forgets the seeds handed out (a session
  // change). Attempt counts and lock-outs stay.
  void lock();
  // "level 01 locked, level 11 unlocked" (empty without levels).
  ACE_WString describe(Clock::time_point now) const;
  // The declared levels, for checks.
  std::vector<unsigned char> declaredLevels() const;

private:
  struct Level {
    unsigned char level = 0;
    std::vector<Bytes> seeds;
    KeyRule key;
    unsigned attempts = 3;
    unsigned lockoutMs = 10000;
    Bytes sessions;
    // What the rotation, the attempts and the lock-out have reached.
    size_t nextSeed = 0;
    unsigned failures = 0;
    bool seedOut = false;
    Bytes seedSent;
    Clock::time_point lockedUntil{};
  };
  Level *levelFor(unsigned char subFunction);
  const Level *levelFor(unsigned char subFunction) const;
  Bytes requestSeed(Level &level, const Bytes &request, unsigned char session,
                    Clock::time_point now);
  Bytes sendKey(Level &level, const Bytes &request, Clock::time_point now);

  std::vector<Level> levels;
  unsigned char unlockedLevel = 0;
};
