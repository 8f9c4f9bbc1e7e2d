// Sockets to FlightGear. Nothing here blocks without a limit: a FlightGear
// that stops answering ends the run with a reason rather than hanging it.
#include "host/flightgear/link.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace toka_host {

namespace {

std::string SystemError(const std::string& what) { return what + ": " + std::strerror(errno); }

int MillisecondsLeft(std::chrono::steady_clock::time_point end) {
  auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - std::chrono::steady_clock::now());
  return left.count() > 0 ? (int)left.count() : 0;
}

std::chrono::steady_clock::time_point After(double seconds) {
  return std::chrono::steady_clock::now() +
         std::chrono::duration_cast<std::chrono::steady_clock::duration>(
             std::chrono::duration<double>(seconds));
}

}  // namespace

// ---- the stream -------------------------------------------------------------

bool FlightGearStream::Open(int port, std::string& error) {
  Close();
  mSocket = socket(AF_INET, SOCK_DGRAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  if (mSocket < 0) {
    error = SystemError("cannot open the stream's socket");
    return false;
  }
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons((uint16_t)port);
  socklen_t size = sizeof address;
  if (bind(mSocket, (sockaddr*)&address, sizeof address) != 0 ||
      getsockname(mSocket, (sockaddr*)&address, &size) != 0) {
    error = SystemError("cannot listen for the stream on 127.0.0.1:" + std::to_string(port));
    Close();
    return false;
  }
  mPort = ntohs(address.sin_port);
  mMalformed = 0;
  return true;
}

bool FlightGearStream::Receive(double values[kFgFieldCount]) {
  bool got = false;
  char packet[2048];
  double parsed[kFgFieldCount];
  for (;;) {
    ssize_t size = recv(mSocket, packet, sizeof packet - 1, 0);
    if (size < 0) break;
    packet[size] = 0;
    // A packet holds one line; a packet with several takes the last.
    std::string text(packet, (size_t)size);
    while (!text.empty() && text.back() == '\n') text.pop_back();
    size_t start = text.rfind('\n');
    std::string line = start == std::string::npos ? text : text.substr(start + 1);
    if (!ParseFlightGearLine(line, parsed)) {
      ++mMalformed;
      continue;
    }
    std::memcpy(values, parsed, sizeof parsed);
    got = true;
  }
  return got;
}

void FlightGearStream::Close() {
  if (mSocket >= 0) close(mSocket);
  mSocket = -1;
}

// ---- the property server ----------------------------------------------------

bool PropertyServer::Connect(const std::string& host, int port, double seconds, std::string& error) {
  Close();
  addrinfo hints{}, *found = nullptr;
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  std::string where = host + ":" + std::to_string(port);
  if (getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found) != 0 || !found) {
    error = "cannot find the address " + where;
    return false;
  }
  mSocket = socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
  int result = mSocket < 0 ? -1 : connect(mSocket, found->ai_addr, found->ai_addrlen);
  freeaddrinfo(found);
  if (result != 0 && errno == EINPROGRESS) {
    pollfd wait = {mSocket, POLLOUT, 0};
    int soError = 0;
    socklen_t size = sizeof soError;
    if (poll(&wait, 1, (int)(seconds * 1000)) == 1 &&
        getsockopt(mSocket, SOL_SOCKET, SO_ERROR, &soError, &size) == 0)
      errno = soError, result = soError ? -1 : 0;
    else
      errno = ETIMEDOUT;
  }
  if (result != 0) {
    error = SystemError("cannot connect to the property server at " + where);
    Close();
    return false;
  }
  mInput.clear();
  mWaiting.clear();
  return true;
}

bool PropertyServer::Write(const std::string& command, std::string& error) {
  std::string line = command + "\r\n";
  size_t sent = 0;
  auto end = After(5);
  while (sent < line.size()) {
    ssize_t n = send(mSocket, line.data() + sent, line.size() - sent, MSG_NOSIGNAL);
    if (n > 0) {
      sent += (size_t)n;
      continue;
    }
    pollfd wait = {mSocket, POLLOUT, 0};
    if (n < 0 && errno != EAGAIN && errno != EWOULDBLOCK) {
      error = SystemError("the property server closed the connection");
      return false;
    }
    if (poll(&wait, 1, MillisecondsLeft(end)) != 1) {
      error = "the property server takes no more commands";
      return false;
    }
  }
  return true;
}

bool PropertyServer::ReadAvailable(int waitMs, std::string& error) {
  pollfd wait = {mSocket, POLLIN, 0};
  if (poll(&wait, 1, waitMs) != 1) return true;
  char buffer[4096];
  for (;;) {
    ssize_t n = recv(mSocket, buffer, sizeof buffer, 0);
    if (n > 0) {
      mInput.append(buffer, (size_t)n);
      continue;
    }
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) return true;
    error = "the property server closed the connection";
    return false;
  }
}

bool PropertyServer::NextReply(std::string& reply) {
  size_t prompt = mInput.find("/> ");
  if (prompt == std::string::npos) return false;
  reply = mInput.substr(0, prompt);
  mInput.erase(0, prompt + 3);
  while (!reply.empty() && (reply.back() == '\n' || reply.back() == '\r')) reply.pop_back();
  return true;
}

// "get P" and "set P V" are answered "P = 'VALUE' (TYPE)"; "run C" with
// "<completed>" when the command ran.
bool PropertyServer::CheckReply(const std::string& command, const std::string& reply,
                                std::string& error) {
  bool good;
  if (command.compare(0, 4, "run ") == 0) {
    good = reply == "<completed>";
  } else {
    size_t space = command.find(' ', 4);
    std::string property = command.substr(4, space == std::string::npos ? space : space - 4);
    good = reply.compare(0, property.size() + 4, property + " = '") == 0 &&
           reply.find("' (", property.size() + 4) != std::string::npos;
  }
  if (!good) error = "FlightGear answered \"" + reply + "\" to \"" + command + "\"";
  return good;
}

bool PropertyServer::Send(const std::string& command, std::string& error) {
  if (!Write(command, error)) return false;
  mWaiting.push_back({command, Clock::now()});
  return true;
}

bool PropertyServer::Collect(double seconds, std::string& error) {
  if (!ReadAvailable(0, error)) return false;
  std::string reply;
  while (!mWaiting.empty() && NextReply(reply)) {
    if (!CheckReply(mWaiting.front().command, reply, error)) return false;
    mWaiting.pop_front();
  }
  if (!mWaiting.empty() &&
      std::chrono::duration<double>(Clock::now() - mWaiting.front().sent).count() > seconds) {
    error = "FlightGear did not answer \"" + mWaiting.front().command + "\" within " +
            std::to_string((int)seconds) + " s";
    return false;
  }
  return true;
}

void PropertyServer::Close() {
  if (mSocket >= 0) close(mSocket);
  mSocket = -1;
  mInput.clear();
  mWaiting.clear();
}

}  // namespace toka_host
