// The ECU entries of a bench (its UCE elements), as cansimu reads them to
// build the host's association table and to name the ECUs.
#pragma once

#include "files/XmlSource.h"

#include <cstdint>
#include <string>
#include <vector>

struct BenchEcu {
  unsigned line = 0;
  // The attributes as written.
  std::string targetAddress, idRx, idTx, scenario;
  // The identifiers as the library reads them.
  uint32_t idRxValue = 0, idTxValue = 0;
  // targetAddress read as the one-byte hex diagnostic address of the host's
  // association table; `addressed` is false when it is no such address.
  bool addressed = false;
  uint8_t address = 0;

  // The library creates an ECU only for an entry with targetAddress, idRx
  // and idTx.
  bool usable() const { return !targetAddress.empty() && !idRx.empty() && !idTx.empty(); }
  // The scenario's file name without folder and extension ("engine").
  std::string name() const;
  // "0x10 engine" or, without a scenario, the address alone.
  std::string label() const;
};

// An INJECT element of a bench, its attributes as written: the library
// applies each at every read of the bench, in document order.
struct BenchInjection {
  unsigned line = 0;
  std::string exportName, status, detail;
};
std::vector<BenchInjection> readBenchInjections(const XmlSource &bench);

// The path of a scenario a bench names: a relative path counts from the
// bench's folder (cansimu works there).
std::string scenarioPath(const std::string &bench, std::string scenario);

// Every UCE element of the bench, in document order.
std::vector<BenchEcu> readBenchEcus(const XmlSource &bench);

// The ECU an argument names: its targetAddress, its idTx or its scenario's
// name, tried in that order; null when none matches. Only ECUs the library
// creates count.
const BenchEcu *findEcu(const std::vector<BenchEcu> &ecus, const std::string &name);
// True when the bench has an ECU the library creates.
bool hasEcus(const std::vector<BenchEcu> &ecus);
// "0x10 engine, 0x01 gateway, 0x40 body": the ECUs a tester can name.
std::string ecuList(const std::vector<BenchEcu> &ecus);

// Reads one-byte hex diagnostic addresses and identifiers as a tester types
// them: "10", "0x10", "7e0". False for any other text.
bool parseHexNumber(const std::string &text, uint32_t &value);
