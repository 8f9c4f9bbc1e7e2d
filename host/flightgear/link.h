// The two ways to a running FlightGear: the stream of the per-frame values
// (its generic protocol over UDP on the loopback) and its property server
// (one TCP connection, for writes and commands).
#ifndef TOKA_HOST_FLIGHTGEAR_LINK_H
#define TOKA_HOST_FLIGHTGEAR_LINK_H

#include <chrono>
#include <deque>
#include <string>

#include "host/flightgear/mapping.h"

namespace toka_host {

class FlightGearStream {
public:
  ~FlightGearStream() { Close(); }
  // Listens on 127.0.0.1:port (0: a free port, which Port() then tells).
  bool Open(int port, std::string& error);
  int Port() const { return mPort; }
  // Takes everything that arrived; true with the newest whole line's values
  // when at least one arrived. Lines that do not parse are counted.
  bool Receive(double values[kFgFieldCount]);
  int Malformed() const { return mMalformed; }
  void Close();

private:
  int mSocket = -1;
  int mPort = 0;
  int mMalformed = 0;
};

// The property server in its prompt mode, where every command is answered
// ("PATH = 'VALUE' (TYPE)", "<completed>" or "*failed*", then the prompt),
// so that every reply is checked.
class PropertyServer {
public:
  ~PropertyServer() { Close(); }
  bool Connect(const std::string& host, int port, double seconds, std::string& error);
  bool Connected() const { return mSocket >= 0; }
  // Sends a command whose reply is checked later, by Collect.
  bool Send(const std::string& command, std::string& error);
  // Checks the replies that arrived. False with the reason when one is not
  // what its command asks for, or when the oldest unanswered command waits
  // longer than seconds.
  bool Collect(double seconds, std::string& error);
  void Close();

private:
  using Clock = std::chrono::steady_clock;
  struct Waiting {
    std::string command;
    Clock::time_point sent;
  };
  bool Write(const std::string& command, std::string& error);
  // Moves whatever can be read into mInput; false when the server is gone.
  bool ReadAvailable(int waitMs, std::string& error);
  // The next whole reply in mInput, without its prompt.
  bool NextReply(std::string& reply);
  bool CheckReply(const std::string& command, const std::string& reply, std::string& error);

  int mSocket = -1;
  std::string mInput;
  std::deque<Waiting> mWaiting;
};

}  // namespace toka_host

#endif
