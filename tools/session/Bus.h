// The port and the diagnostic channels of a session, driven as a host drives
// them. In the step voice (demo, shell) each call is one line with its
// status; in the answer voice (ask) only requests, answers and refused calls
// are printed. Answers are decoded for a person either way.
#pragma once

#include "files/BenchFile.h"
#include "output/FrameText.h"
#include "session/Session.h"

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

// Json: nothing is printed but refused calls, on standard error; the
// answers are kept in the Reading for the caller to print.
enum class Voice { Steps, Answers, Json };

// The data bytes of one CAN frame.
constexpr size_t kFrameBytes = 8;
// How long a read of the port or channel queue waits: answers are queued
// before the request's call returns, so only a missing one waits this long.
constexpr uint32_t kReadMs = 100;
// How long an ECU that answered "response pending" may take for its next
// answer (a usual P2* time).
constexpr uint32_t kPendingMs = 5000;

// One event read, as machine-readable fields.
struct ReadEvent {
  uint32_t type = 0;
  std::string name;    // the event type's name
  int resultCode = -1; // -1 when the event carries none
  std::string frame;   // hex, empty when the event carries no frame
};

// What a read of a queue brought.
struct Reading {
  std::vector<ReadEvent> read;
  unsigned events = 0;  // events read
  unsigned answers = 0; // events that carry an ECU's answer
  bool endOfReception = false;
  CAN_STATUS status = E_NO_EVENT; // what the last read answered
};

class Bus {
public:
  Bus(const Session &session, std::vector<BenchEcu> ecus, Voice voice);

  const std::vector<BenchEcu> &ecus() const { return ecus_; }

  CAN_PRT_HANDLE port() const { return port_; }
  CAN_CHN_HANDLE channel() const { return channels_.empty() ? nullptr : channels_.back().handle; }
  // The current channel is a broadcast one (its session's opening sends the
  // start frame, whose answers are then queued).
  bool broadcast() const { return !channels_.empty() && channels_.back().broadcast; }
  // What the session has set up, as far as its own calls tell: an
  // association table loaded, the current channel's session opened.
  bool assocLoaded() const { return assocLoaded_; }
  bool sessionOpen() const { return !channels_.empty() && channels_.back().open; }

  CAN_STATUS reservePort();
  CAN_STATUS freePort();
  // The host's association table: one entry per ECU of the bench with a
  // one-byte targetAddress, mapping it to the ECU's idTx and idRx.
  CAN_STATUS loadAssocTable();
  CAN_STATUS detectBaudRate();
  CAN_STATUS showMeasures();
  // CAN_PrtSendTrame, `frame` at most 8 bytes.
  CAN_STATUS sendFrame(uint32_t id, const Bytes &frame);

  // CAN_ChnCreate and CAN_ChnConfig: a one-to-one channel to `ecu`, or a
  // broadcast channel (null) that sends `startFrame` when its session opens.
  // The new channel becomes the current one; one whose configuration fails
  // is freed again, so that no half-made channel stays on the port.
  CAN_STATUS createChannel(const BenchEcu *ecu, const Bytes &startFrame = Bytes());
  // The calls on the current channel.
  CAN_STATUS openSession();
  CAN_STATUS closeSession();
  CAN_STATUS sendRequest(const Bytes &request);
  // CAN_ChnFree; the channel created before it becomes current again.
  CAN_STATUS freeChannel();

  // Reads the current channel's (the port's) events, each decoded. The
  // answers to a request are all queued when its call returns, so the
  // reading stops at the last of them; with `untilEmpty` it goes on until a
  // read waits `timeoutMs` in vain, and prints that read too.
  Reading readChannel(uint32_t timeoutMs, bool untilEmpty = false);
  // While set, a read that gets nothing prints nothing (the caller reads
  // again, or says so itself).
  void setQuietMisses(bool quiet) { quietMisses_ = quiet; }
  Reading readPort(uint32_t timeoutMs, bool untilEmpty = false);
  // Releases whatever the current channel has queued, unprinted.
  void drainChannel();

private:
  void step(const std::string &call, CAN_STATUS status, const std::string &note) const;
  void request(const std::string &call, const std::string &shown, CAN_STATUS status,
               const std::string &meaning) const;
  bool quietMisses_ = false;
  template <class Event, class Read, class Describe, class Free>
  Reading readEvents(const char *name, uint32_t timeoutMs, bool untilEmpty, const Read &read,
                     const Describe &describe, const Free &release,
                     const std::function<void()> &wake, const char *endFifo) const;

  const Session &session_;
  std::vector<BenchEcu> ecus_;
  Voice voice_;
  CAN_PRT_HANDLE port_ = nullptr;
  struct Channel {
    CAN_CHN_HANDLE handle;
    bool broadcast;
    bool open;
  };
  std::vector<Channel> channels_;
  bool assocLoaded_ = false;
};

// The ECUs of the bench at `configuration`, read as cansimu reads them.
// Throws SetupError for a file that cannot be read or is not XML.
std::vector<BenchEcu> readBench(const std::string &configuration);
