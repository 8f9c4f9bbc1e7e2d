// Datarefs: publishing, finding, reading and writing through the owner's
// accessors, handle validation, ownership, and the build stamp.
#include <regex>

#include "harness/data_harness.h"

using namespace toka_test;

namespace {

std::string Ptr(const void* p) { return std::to_string((intptr_t)p); }

// Accessors that log what reached them and answer with values of their own.
std::string Args(void* r, const std::string& rest = "") { return "(" + Ptr(r) + rest + ")"; }
std::string Args(void* r, const void* values, int offset, int n) {
  return Args(r, "," + Ptr(values) + "," + std::to_string(offset) + "," + std::to_string(n));
}
template <class T>
std::string Args(void* r, T v) { return Args(r, "," + std::to_string(v)); }

int ReadInt(void* r) { LogCall("readInt" + Args(r)); return 42; }
void WriteInt(void* r, int v) { LogCall("writeInt" + Args(r, v)); }
float ReadFloat(void* r) { LogCall("readFloat" + Args(r)); return 1.5f; }
void WriteFloat(void* r, float v) { LogCall("writeFloat" + Args(r, v)); }
double ReadDouble(void* r) { LogCall("readDouble" + Args(r)); return 2.25; }
void WriteDouble(void* r, double v) { LogCall("writeDouble" + Args(r, v)); }
int ReadInts(void* r, int* v, int o, int n) {
  LogCall("readIntArray" + Args(r, v, o, n));
  return -3;
}
void WriteInts(void* r, int* v, int o, int n) { LogCall("writeIntArray" + Args(r, v, o, n)); }
int ReadFloats(void* r, float* v, int o, int n) {
  LogCall("readFloatArray" + Args(r, v, o, n));
  return 99;
}
void WriteFloats(void* r, float* v, int o, int n) { LogCall("writeFloatArray" + Args(r, v, o, n)); }
int ReadBytes(void* r, void* v, int o, int n) { LogCall("readData" + Args(r, v, o, n)); return 7; }
void WriteBytes(void* r, void* v, int o, int n) { LogCall("writeData" + Args(r, v, o, n)); }

void* const kRead = (void*)11;
void* const kWrite = (void*)22;

TOKADataRef RegisterAll(const char* name, int writable, void* read = kRead, void* write = kWrite) {
  return TOKARegisterDataAccessor(name, 63, writable, ReadInt, WriteInt, ReadFloat, WriteFloat,
                                  ReadDouble, WriteDouble, ReadInts, WriteInts, ReadFloats,
                                  WriteFloats, ReadBytes, WriteBytes, read, write);
}

TOKADataRef RegisterInt(const char* name, void* refcon) {
  return TOKARegisterDataAccessor(name, DataTypeInt, 1, ReadInt, WriteInt, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, refcon, refcon);
}

// Every get and set once; the results the library handed back.
std::vector<double> UseEveryAccessor(TOKADataRef ref, int* ints, float* floats, char* bytes) {
  std::vector<double> results;
  results.push_back(TOKAGetDatai(ref));
  TOKASetDatai(ref, -5);
  results.push_back(TOKAGetDataf(ref));
  TOKASetDataf(ref, 0.25f);
  results.push_back(TOKAGetDatad(ref));
  TOKASetDatad(ref, 8.5);
  results.push_back(TOKAGetDatavi(ref, ints, 9, 77));
  TOKASetDatavi(ref, ints, -2, 3);
  results.push_back(TOKAGetDatavf(ref, nullptr, 1, -4));
  TOKASetDatavf(ref, floats, 0, 0);
  results.push_back(TOKAGetDatab(ref, bytes, 1000, 2));
  TOKASetDatab(ref, bytes, 3, 1);
  return results;
}

class Datarefs : public TokaTest {
protected:
  int pub = 0, con = 0;
  void StartTwo() {
    AddScripted("pub.orv", "publisher");
    AddScripted("con.orv", "consumer");
    Initialize();
    pub = TOKAFindPluginBySignature("test.publisher");
    con = TOKAFindPluginBySignature("test.consumer");
    for (int id : {pub, con}) RunAs(id, [] { TOKASetErrorCallback(RecordError); });
  }
};

TEST_F(Datarefs, ConsumerReachesEveryAccessorOfThePublisherInThePublishersContext) {
  StartTwo();
  TOKADataRef ref = nullptr;
  RunAs(pub, [&] { ref = RegisterAll("test/all", 1); });
  ASSERT_NE(nullptr, ref);
  EXPECT_EQ(nullptr, TOKAFindDataRef("test/All"));  // names are case-sensitive
  EXPECT_EQ(nullptr, TOKAFindDataRef("test/al"));

  int ints[1];
  float floats[1];
  char bytes[1];
  std::vector<double> results;
  RunAs(con, [&] {
    TOKADataRef found = TOKAFindDataRef("test/all");
    EXPECT_EQ(ref, found);
    EXPECT_EQ(63, TOKAGetDataRefTypes(found));
    EXPECT_EQ(1, TOKACanWriteDataRef(found));
    EXPECT_EQ(1, TOKAIsDataRefGood(found));
    results = UseEveryAccessor(found, ints, floats, bytes);
    EXPECT_EQ(con, TOKAGetMyID());
  });

  // The owner's results come back unchanged, nothing clamped or converted.
  EXPECT_EQ((std::vector<double>{42, 1.5, 2.25, -3, 99, 7}), results);
  std::string at = "@" + std::to_string(pub);
  EXPECT_EQ((std::vector<std::string>{
                "readInt(11)" + at, "writeInt(22,-5)" + at, "readFloat(11)" + at,
                "writeFloat(22,0.250000)" + at, "readDouble(11)" + at,
                "writeDouble(22,8.500000)" + at, "readIntArray(11," + Ptr(ints) + ",9,77)" + at,
                "writeIntArray(22," + Ptr(ints) + ",-2,3)" + at, "readFloatArray(11,0,1,-4)" + at,
                "writeFloatArray(22," + Ptr(floats) + ",0,0)" + at,
                "readData(11," + Ptr(bytes) + ",1000,2)" + at,
                "writeData(22," + Ptr(bytes) + ",3,1)" + at}),
            Calls());
  EXPECT_TRUE(Errors().empty());
}

TEST_F(Datarefs, MissingAccessorsReadOnlyDatarefsAndDisabledOwnersAreNeverCalled) {
  StartTwo();
  TOKADataRef intOnly = nullptr, readOnly = nullptr;
  RunAs(pub, [&] {
    intOnly = RegisterInt("test/int", kRead);
    readOnly = RegisterAll("test/ro", 0);
  });
  int ints[1];
  float floats[1];
  char bytes[1];
  // No conversion between types: only the int accessors run.
  EXPECT_EQ((std::vector<double>{42, 0, 0, 0, 0, 0}),
            UseEveryAccessor(intOnly, ints, floats, bytes));
  std::string at = "@" + std::to_string(pub);
  EXPECT_EQ((std::vector<std::string>{"readInt(11)" + at, "writeInt(11,-5)" + at}), Calls());
  EXPECT_EQ(DataTypeInt, TOKAGetDataRefTypes(intOnly));

  Calls().clear();
  EXPECT_EQ(0, TOKACanWriteDataRef(readOnly));
  UseEveryAccessor(readOnly, ints, floats, bytes);
  for (const std::string& call : Calls()) EXPECT_EQ(0u, call.rfind("read", 0)) << call;
  EXPECT_EQ(6u, Calls().size());

  Calls().clear();
  const std::vector<double> zeros(6, 0.0);
  EXPECT_EQ(zeros, UseEveryAccessor(nullptr, ints, floats, bytes));
  EXPECT_EQ(0, TOKAGetDataRefTypes(nullptr));
  EXPECT_EQ(0, TOKACanWriteDataRef(nullptr));
  EXPECT_EQ(0, TOKAIsDataRefGood(nullptr));

  TOKADisablePlugin(pub);
  EXPECT_EQ(zeros, UseEveryAccessor(intOnly, ints, floats, bytes));
  EXPECT_TRUE(Calls().empty());
  EXPECT_EQ(intOnly, TOKAFindDataRef("test/int"));  // disabled, not gone
  TOKAEnablePlugin(pub);
  EXPECT_EQ(42, TOKAGetDatai(intOnly));
  EXPECT_EQ(0, TOKAGetMyID());
}

TEST_F(Datarefs, HandlesStayValidAcrossAThousandRegistrationsAndStrayPointersAreRejected) {
  StartTwo();
  std::vector<TOKADataRef> refs;
  RunAs(pub, [&] {
    for (int i = 0; i < 1000; ++i)
      refs.push_back(RegisterInt(("test/n" + std::to_string(i)).c_str(), (void*)(intptr_t)i));
  });
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(refs[i], TOKAFindDataRef(("test/n" + std::to_string(i)).c_str())) << i;
    EXPECT_EQ(1, TOKAIsDataRefGood(refs[i])) << i;
  }
  for (int i : {0, 31, 32, 500, 999}) {
    Calls().clear();
    TOKAGetDatai(refs[i]);
    EXPECT_EQ((std::vector<std::string>{"readInt(" + std::to_string(i) + ")@" +
                                        std::to_string(pub)}),
              Calls());
  }

  // Records of one block lie side by side: 1000 = 31 * 32 + 8, so the last
  // block has room past its eighth record.
  const size_t size = (char*)refs[1] - (char*)refs[0];
  ASSERT_EQ(7 * size, (size_t)((char*)refs[999] - (char*)refs[992]));
  int local = 0;
  const std::vector<void*> strays = {(char*)refs[5] + 1, (char*)refs[40] + 4,
                                     (char*)refs[500] + size / 2, (char*)refs[999] + size,
                                     &local};
  for (void* stray : strays) {
    EXPECT_EQ(0, TOKAIsDataRefGood(stray));
    RunAs(pub, [&] { TOKAUnregisterDataAccessor(stray); });
  }
  const std::string illegal =
      "Dataref is illegal and cannot be unregistered.@" + std::to_string(pub);
  EXPECT_EQ(std::vector<std::string>(strays.size(), illegal), Errors());
  EXPECT_EQ(1, TOKAIsDataRefGood(refs[5]));
}

TEST_F(Datarefs, OnlyTheLiveOwnerHoldsANameAndAReRegistrationRevivesTheSameHandle) {
  StartTwo();
  TOKADataRef first = nullptr, second = nullptr, again = nullptr;
  RunAs(pub, [&] { first = RegisterInt("test/owned", (void*)1); });
  RunAs(con, [&] { second = RegisterInt("test/owned", (void*)2); });
  RunAs(pub, [&] { again = RegisterInt("test/owned", (void*)3); });
  EXPECT_EQ(first, second);
  EXPECT_EQ(first, again);
  const std::string p = std::to_string(pub), c = std::to_string(con);
  EXPECT_EQ((std::vector<std::string>{"Dataref is already registered by someone else.@" + c,
                                      "Dataref is already registered by someone else.@" + p}),
            Errors());
  TOKAGetDatai(first);
  EXPECT_EQ((std::vector<std::string>{"readInt(1)@" + p}), Calls());  // the first owner's

  Errors().clear();
  RunAs(con, [&] { TOKAUnregisterDataAccessor(first); });
  EXPECT_EQ((std::vector<std::string>{"Dataref is not owned by you - you cannot unregsiter.@" + c}),
            Errors());
  EXPECT_EQ(1, TOKAIsDataRefGood(first));

  Errors().clear();
  Calls().clear();
  RunAs(pub, [&] { TOKAUnregisterDataAccessor(first); });
  EXPECT_TRUE(Errors().empty());
  EXPECT_EQ(nullptr, TOKAFindDataRef("test/owned"));
  EXPECT_EQ(0, TOKAIsDataRefGood(first));
  EXPECT_EQ(0, TOKAGetDatai(first));
  TOKASetDatai(first, 5);
  EXPECT_TRUE(Calls().empty());
  RunAs(pub, [&] { TOKAUnregisterDataAccessor(first); });  // no owner: not the caller's
  EXPECT_EQ((std::vector<std::string>{"Dataref is not owned by you - you cannot unregsiter.@" + p}),
            Errors());

  RunAs(con, [&] { second = RegisterAll("test/owned", 1, (void*)4, (void*)5); });
  EXPECT_EQ(first, second);
  EXPECT_EQ(first, TOKAFindDataRef("test/owned"));
  EXPECT_EQ(63, TOKAGetDataRefTypes(first));
  TOKAGetDatai(first);
  TOKASetDataf(first, 1);
  EXPECT_EQ((std::vector<std::string>{"readInt(4)@" + c, "writeFloat(5,1.000000)@" + c}), Calls());
}

TEST_F(Datarefs, UnloadingTheOwnerOrphansOnlyItsOwnDatarefs) {
  AddScripted("a.orv", "alpha");
  PluginScript& gps = AddAircraftPlugin(tree, "gps");
  gps.onStart = [] { RegisterInt("test/gps", (void*)7); };
  Initialize();
  TOKAEventHook(3, 0, 0, 0);
  ASSERT_EQ(3, TOKACountPlugins());
  const int alpha = 1, gpsID = 2;
  TOKADataRef ref = TOKAFindDataRef("test/gps"), mine = nullptr;
  RunAs(alpha, [&] { mine = RegisterInt("test/alpha", (void*)8); });
  TOKAGetDatai(ref);
  EXPECT_EQ((std::vector<std::string>{"readInt(7)@" + std::to_string(gpsID)}), Calls());

  TOKAEventHook(8, 0, 0, 0);
  ASSERT_EQ(2, TOKACountPlugins());
  Calls().clear();
  EXPECT_EQ(0, TOKAGetDatai(ref));
  TOKASetDatai(ref, 3);
  EXPECT_TRUE(Calls().empty());
  EXPECT_EQ(nullptr, TOKAFindDataRef("test/gps"));
  EXPECT_EQ(0, TOKAIsDataRefGood(ref));
  EXPECT_EQ(mine, TOKAFindDataRef("test/alpha"));
  EXPECT_EQ(42, TOKAGetDatai(mine));

  // The same name registered again by whoever comes next: the old handle.
  TOKADataRef revived = nullptr;
  RunAs(alpha, [&] { revived = RegisterInt("test/gps", (void*)9); });
  EXPECT_EQ(ref, revived);
  Calls().clear();
  TOKASetDatai(ref, 6);
  EXPECT_EQ((std::vector<std::string>{"writeInt(9,6)@1"}), Calls());
}

// What the simulator's build-stamp dataref received.
std::vector<std::string> gStampWrites;
void WriteStamp(void* refcon, void* values, int offset, int count) {
  gStampWrites.push_back(std::string((const char*)values, count) + "|" + std::to_string(offset) +
                         "|" + Ptr(refcon) + "|" + std::to_string(TOKAGetMyID()));
}
TOKADataRef RegisterStamp(const char* name) {
  return TOKARegisterDataAccessor(name, DataTypeData, 1, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  WriteStamp, nullptr, (void*)33);
}

TEST_F(Datarefs, StartUpWritesTheBuildStampIntoTheSimulatorsDataref) {
  // The simulator publishes its datarefs before it starts the library.
  RegisterStamp("sim/version/toka_build_string");
  Initialize();
  ASSERT_EQ(1u, gStampWrites.size());
  std::smatch match;
  ASSERT_TRUE(std::regex_match(gStampWrites[0], match,
                               std::regex("([A-Z][a-z]{2} [ 123][0-9] [0-9]{4} "
                                          "[0-9]{2}:[0-9]{2}:[0-9]{2})\\0\\|0\\|33\\|0")))
      << gStampWrites[0];
}

TEST_F(Datarefs, NoStampWithoutALiveDatarefOfExactlyThatName) {
  RegisterStamp("sim/version/TOKA_build_string");
  TOKAUnregisterDataAccessor(RegisterStamp("sim/version/toka_build_string"));
  EXPECT_EQ(nullptr, TOKAFindDataRef("sim/version/toka_build_string"));
  Initialize();
  EXPECT_TRUE(gStampWrites.empty());
}

}  // namespace
