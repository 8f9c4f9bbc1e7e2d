// The flightgear world without FlightGear: a recorded stream replayed into
// the host's UDP port and a property server played by the test; then what
// the host says when FlightGear is missing, exits or falls silent. The last
// test flies a real FlightGear, when the run asks for it.
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <mutex>
#include <regex>
#include <sstream>
#include <thread>

#include "harness/host_program.h"
#include "harness/temp_tree.h"
#include "host/flightgear/flightgear.h"
#include "host/flightgear/mapping.h"
#include "host/commands.h"

using namespace toka_host;
using namespace toka_test;

namespace {

std::vector<std::string> RecordedStream() {
  std::ifstream in(std::string(TOKA_EXAMPLES_SOURCE) + "../tests/flightgear/recorded-stream.txt");
  std::vector<std::string> lines;
  for (std::string line; std::getline(in, line);) lines.push_back(line + "\n");
  return lines;
}

std::vector<double> Fields(const std::string& line) {
  std::vector<double> fields;
  std::istringstream in(line);
  for (std::string field; std::getline(in, field, '\t');) fields.push_back(std::stod(field));
  return fields;
}

// A FlightGear as the host sees it: a property server in prompt mode on a
// free port, and a stream sent to the port after it.
class FakeFlightGear {
public:
  std::vector<std::string> lines = RecordedStream();
  std::string failSetsOf;  // a property whose sets are answered "*failed*"

  FakeFlightGear() {
    mListener = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    bind(mListener, (sockaddr*)&address, sizeof address);
    listen(mListener, 1);
    getsockname(mListener, (sockaddr*)&address, &size);
    port = ntohs(address.sin_port);
    mStream = socket(AF_INET, SOCK_DGRAM, 0);
    mThread = std::thread([this] { Serve(); });
  }
  ~FakeFlightGear() {
    mStop = true;
    shutdown(mListener, SHUT_RDWR);
    if (mConnection >= 0) shutdown(mConnection, SHUT_RDWR);
    mThread.join();
    close(mListener);
    close(mStream);
    if (mConnection >= 0) close(mConnection);
  }
  std::string Address() const { return "127.0.0.1:" + std::to_string(port); }
  void Send(const std::string& line) {
    sockaddr_in to{};
    to.sin_family = AF_INET;
    to.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    to.sin_port = htons((uint16_t)(port + 1));
    sendto(mStream, line.data(), line.size(), 0, (sockaddr*)&to, sizeof to);
  }
  // Waits a little for a command to arrive.
  bool Received(const std::string& command) {
    for (int i = 0; i < 200; ++i, std::this_thread::sleep_for(std::chrono::milliseconds(10))) {
      std::lock_guard<std::mutex> lock(mMutex);
      if (std::find(mCommands.begin(), mCommands.end(), command) != mCommands.end()) return true;
    }
    return false;
  }
  int port = 0;

private:
  // Streams the recording until the host connects, as FlightGear streams
  // from the start; then answers every command.
  void Serve() {
    std::thread streaming([this] {
      for (size_t i = 0; !mConnected && !mStop; ++i) {
        Send(lines[i % 4]);
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
      }
    });
    mConnection = accept(mListener, nullptr, nullptr);
    mConnected = true;
    streaming.join();
    std::string input;
    char buffer[1024];
    ssize_t n;
    while (mConnection >= 0 && (n = recv(mConnection, buffer, sizeof buffer, 0)) > 0) {
      input.append(buffer, (size_t)n);
      for (size_t end; (end = input.find("\r\n")) != std::string::npos;) {
        std::string command = input.substr(0, end);
        input.erase(0, end + 2);
        {
          std::lock_guard<std::mutex> lock(mMutex);
          mCommands.push_back(command);
        }
        std::string reply = Reply(command) + "\r\n/> ";
        send(mConnection, reply.data(), reply.size(), MSG_NOSIGNAL);
      }
    }
  }
  std::string Reply(const std::string& command) {
    if (command.compare(0, 4, "run ") == 0) return "<completed>";
    std::istringstream words(command.substr(4));
    std::string property, value = "0";
    words >> property >> value;
    if (command.compare(0, 4, "set ") == 0 && property == failSetsOf) return "*failed*";
    return property + " = '" + value + "' (double)";
  }

  int mListener = -1, mStream = -1, mConnection = -1;
  std::atomic<bool> mConnected{false}, mStop{false};
  std::thread mThread;
  std::mutex mMutex;
  std::vector<std::string> mCommands;
};

class FlightGearWorldTest : public HostTest {
protected:
  FakeFlightGear flightgear;
  void SetUp() override {
    HostTest::SetUp();
    options.flightgear.enabled = true;
    options.flightgear.address = flightgear.Address();
  }
  // The line as the next frame's newest, and that frame.
  void Frame(const std::string& line) {
    flightgear.Send(line);
    Frames(1);
  }
  double Read(const char* name) {
    double value = 0;
    AsTester([&] { value = TOKAGetDatad(TOKAFindDataRef(name)); });
    return value;
  }
  void Write(const char* name, float value) {
    AsTester([&] { TOKASetDataf(TOKAFindDataRef(name), value); });
  }
};

// The mapping is the one table of the flightgear world: the stream's
// protocol file lists its properties in its order, and the host publishes
// each of its datarefs, writable exactly where the mapping sends writes.
// Every streamed property becomes its dataref in the host's units, the
// newest line of a frame wins, and FlightGear's clock is the simulator's.
TEST_F(FlightGearWorldTest, TheStreamBecomesTheDataRefsOfTheMappingInTheHostsUnits) {
  std::string protocol = ReadFile(std::string(TOKA_EXAMPLES_SOURCE) + "../host/flightgear/toka.xml");
  std::regex node("<node>([^<]*)</node>");
  int field = 0;
  for (auto it = std::sregex_iterator(protocol.begin(), protocol.end(), node);
       it != std::sregex_iterator(); ++it, ++field) {
    ASSERT_LT(field, (int)kFgFieldCount);
    EXPECT_EQ(FlightGearMapping((FlightGearField)field).property, (*it)[1].str());
  }
  EXPECT_EQ((int)kFgFieldCount, field);
  Start();
  ASSERT_TRUE(FlightGearWorld());
  for (int i = 0; i < kFgFieldCount; ++i) {
    const FlightGearValue& value = FlightGearMapping((FlightGearField)i);
    if (!*value.dataref) continue;
    TOKADataRef ref = TOKAFindDataRef(value.dataref);
    ASSERT_NE(nullptr, ref) << value.dataref;
    EXPECT_EQ(value.writable ? 1 : 0, TOKACanWriteDataRef(ref)) << value.dataref;
  }

  flightgear.Send(flightgear.lines[6]);  // overtaken by the next, in the same frame
  Frame(flightgear.lines[5]);
  std::vector<double> v = Fields(flightgear.lines[5]);
  ASSERT_EQ((size_t)kFgFieldCount, v.size());
  const double feet = 0.3048, knots = 1852.0 / 3600;
  EXPECT_NEAR(v[0], Read("sim/time/total_running_time_sec"), 1e-6);
  EXPECT_NEAR(v[2], Read("sim/flightmodel/position/latitude"), 1e-9);
  EXPECT_NEAR(v[3], Read("sim/flightmodel/position/longitude"), 1e-9);
  EXPECT_NEAR(v[4] * feet, Read("sim/flightmodel/position/elevation"), 1e-6);
  EXPECT_NEAR(v[5], Read("sim/flightmodel/position/heading"), 1e-4);
  EXPECT_NEAR(v[6], Read("sim/flightmodel/position/pitch"), 1e-4);
  EXPECT_NEAR(v[7], Read("sim/flightmodel/position/roll"), 1e-4);
  EXPECT_NEAR(v[8] * knots, Read("sim/flightmodel/position/groundspeed"), 1e-4);
  EXPECT_NEAR(v[9] * knots, Read("sim/flightmodel/position/true_airspeed"), 1e-4);
  EXPECT_NEAR(v[10] * knots, Read("sim/flightmodel/position/indicated_airspeed"), 1e-4);
  EXPECT_NEAR(v[11] * feet, Read("sim/flightmodel/position/vertical_speed"), 1e-4);
  EXPECT_NEAR(v[12], Read("sim/flightmodel/engine/rpm"), 1e-2);
  EXPECT_NEAR(v[14], Read("sim/cockpit/controls/throttle"), 1e-4);
  // Flight loops see FlightGear's time; the local frame is around where
  // FlightGear's aircraft was when the host connected, so it is close.
  float elapsed = 0;
  AsTester([&] { elapsed = TOKAGetElapsedTime(); });
  EXPECT_NEAR(v[0], elapsed, 1e-3);
  EXPECT_LT(std::fabs(Read("sim/flightmodel/position/local_x")), 1000);

  // A line that does not parse is dropped: the values stay.
  Frame("12.5\t0\tnot a number\n");
  EXPECT_NEAR(v[2], Read("sim/flightmodel/position/latitude"), 1e-9);
  // Frozen, FlightGear is paused, and the plugins hear so.
  std::string frozen = flightgear.lines[7];
  frozen.replace(frozen.find('\t'), 3, "\t1\t");
  Frame(frozen);
  int paused = 0;
  AsTester([&] { paused = TOKAGetDatai(TOKAFindDataRef("sim/time/paused")); });
  EXPECT_EQ(1, paused);
  EXPECT_NE(std::string::npos, output.find("[sim] paused\n"));
}

// A plugin's write shows at once, reaches FlightGear at the end of the frame
// through the property server, and stands until FlightGear has had time to
// apply it; commands act in FlightGear; a refused write ends the world.
TEST_F(FlightGearWorldTest, WritesAndCommandsGoToThePropertyServer) {
  Start();
  Frame(flightgear.lines[4]);
  Write("sim/cockpit/controls/yoke_roll", 0.3f);
  Write("sim/flightmodel/position/elevation", 1000);
  EXPECT_NEAR(0.3, Read("sim/cockpit/controls/yoke_roll"), 1e-6);
  Frames(1);
  EXPECT_TRUE(flightgear.Received("set /controls/flight/aileron 0.3000000119"));
  EXPECT_TRUE(flightgear.Received("set /position/altitude-ft 3280.839895"));
  // The stream still says 0 a moment later: the write stands...
  std::string line = flightgear.lines[4];
  Frame(line.replace(0, line.find('\t'), "8.1"));
  EXPECT_NEAR(0.3, Read("sim/cockpit/controls/yoke_roll"), 1e-6);
  // ...and half a second of FlightGear's time later the stream is believed.
  Frame(flightgear.lines[6]);
  EXPECT_NEAR(0, Read("sim/cockpit/controls/yoke_roll"), 1e-6);

  toka_host::RunCommandOnce(toka_host::FindHostCommand("sim/operation/pause_toggle"));
  Frames(1);
  EXPECT_TRUE(flightgear.Received("set /sim/freeze/master true"));

  flightgear.failSetsOf = "/controls/flight/aileron";
  Write("sim/cockpit/controls/yoke_roll", -0.5f);
  for (int i = 0; i < 200 && WorldFailure().empty(); ++i) {
    Frame(flightgear.lines[7]);
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  EXPECT_EQ("FlightGear answered \"*failed*\" to \"set /controls/flight/aileron -0.5\"",
            WorldFailure());
}

// A FlightGear that falls silent during the run, is missing, exits while
// starting, or never streams: one line that says which, and a failed run,
// or none.
TEST_F(FlightGearWorldTest, FlightGearThatCannotFlyIsReportedAndNothingHangs) {
  options.flightgear.silentSeconds = 0.3;
  options.frames = 100000;
  EXPECT_EQ(1, RunHost(options));
  EXPECT_EQ("FlightGear stopped answering: nothing on the stream for 0.3 s", WorldFailure());
  // The plugins were shut down cleanly.
  ASSERT_FALSE(Lifecycle().empty());
  EXPECT_EQ("tester.stop@1", Lifecycle().back());

  options.flightgear.address = "";
  options.flightgear.log = tree.root() + "fg.log";
  std::string error;
  setenv("TOKA_FGFS", "/nonexistent/fgfs", 1);
  EXPECT_FALSE(StartHost(options, error));
  EXPECT_EQ("TOKA_FGFS is set to /nonexistent/fgfs, which is not a program", error);

  setenv("TOKA_FGFS", "/bin/false", 1);
  EXPECT_FALSE(StartHost(options, error));
  EXPECT_EQ("FlightGear exited while starting (exit status 1); see its log " + tree.root() + "fg.log",
            error);

  std::string sleeper = tree.AddFile("sleeper", "#!/bin/sh\nexec sleep 60\n");
  chmod(sleeper.c_str(), 0755);
  setenv("TOKA_FGFS", sleeper.c_str(), 1);
  options.flightgear.startSeconds = 1;
  auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(StartHost(options, error));
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(30));
  EXPECT_TRUE(std::regex_match(error, std::regex("FlightGear sent nothing to the stream's port "
                                                 "[0-9]+ within 1 s; see its log .*fg.log, or "
                                                 "give it longer with --flightgear-timeout")))
      << error;
  unsetenv("TOKA_FGFS");
  EXPECT_FALSE(FlightGearWorld());
}

// FlightGear itself, started by the host twice: the heading hold flies its
// example's scenario, and the yoke banks the aircraft. Minutes long, so it
// runs when TOKA_FLIGHTGEAR_TESTS=1 (scripts/test.sh sets it once).
TEST(FlightGearLive, TheHeadingHoldTurnsTheAircraftAndTheYokeBanksIt) {
  if (!std::getenv("TOKA_FLIGHTGEAR_TESTS")) GTEST_SKIP() << "TOKA_FLIGHTGEAR_TESTS is not set";
  TempTree empty;
  std::string common = "--world flightgear --render none --flightgear-log '" + empty.root();
  ProgramRun run = RunHost(TOKA_EXAMPLES_ROOT, common + "hold.log' --scenario '" TOKA_EXAMPLES_SOURCE
                                               "heading-hold/heading-hold.scenario'");
  EXPECT_EQ(0, run.status) << run.err << ReadFile(empty.root() + "hold.log");
  EXPECT_NE(std::string::npos, run.err.find("toka-host: all 6 steps passed\n")) << run.err;
  run = RunHost(empty.root(), common + "bank.log' --scenario '" TOKA_EXAMPLES_SOURCE
                                      "../tests/flightgear/bank.scenario'");
  EXPECT_EQ(0, run.status) << run.err;
  EXPECT_NE(std::string::npos, run.err.find("toka-host: all 3 steps passed\n")) << run.err;
}

}  // namespace
