// Datarefs: publishing, finding, reading and writing through the owner's
// accessors, handle validation, ownership, and the build stamp.
#include <regex>
#include <type_traits>

#include "harness/harness.h"

using namespace toka_test;

namespace {

template <class T>
std::string Text(T value) {
  if constexpr (std::is_pointer_v<T>) return std::to_string((intptr_t)value);
  else return std::to_string(value);
}
template <class... A>
std::string Args(A... values) {
  std::string text;
  ((text += (text.empty() ? "" : ",") + Text(values)), ...);
  return "(" + text + ")";
}

// Accessors that log what reached them and answer with values of their own.
int ReadInt(void* r) { Log("readInt" + Args(r)); return 42; }
void WriteInt(void* r, int v) { Log("writeInt" + Args(r, v)); }
float ReadFloat(void* r) { Log("readFloat" + Args(r)); return 1.5f; }
void WriteFloat(void* r, float v) { Log("writeFloat" + Args(r, v)); }
double ReadDouble(void* r) { Log("readDouble" + Args(r)); return 2.25; }
void WriteDouble(void* r, double v) { Log("writeDouble" + Args(r, v)); }
int ReadInts(void* r, int* v, int o, int n) { Log("readIntArray" + Args(r, v, o, n)); return -3; }
void WriteInts(void* r, int* v, int o, int n) { Log("writeIntArray" + Args(r, v, o, n)); }
int ReadFloats(void* r, float* v, int o, int n) {
  Log("readFloatArray" + Args(r, v, o, n));
  return 99;
}
void WriteFloats(void* r, float* v, int o, int n) { Log("writeFloatArray" + Args(r, v, o, n)); }
int ReadBytes(void* r, void* v, int o, int n) { Log("readData" + Args(r, v, o, n)); return 7; }
void WriteBytes(void* r, void* v, int o, int n) { Log("writeData" + Args(r, v, o, n)); }

TOKADataRef RegisterAll(const char* name, int writable, void* read, void* write) {
  return TOKARegisterDataAccessor(name, 63, writable, ReadInt, WriteInt, ReadFloat, WriteFloat,
                                  ReadDouble, WriteDouble, ReadInts, WriteInts, ReadFloats,
                                  WriteFloats, ReadBytes, WriteBytes, read, write);
}

TOKADataRef RegisterInt(const char* name, void* refcon) {
  return TOKARegisterDataAccessor(name, DataTypeInt, 1, ReadInt, WriteInt, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, refcon, refcon);
}

// The arguments UseEveryAccessor passes.
int gInts[1];
float gFloats[1];
char gBytes[1];

// Every get and set once; the results the library handed back.
std::vector<double> UseEveryAccessor(TOKADataRef ref) {
  std::vector<double> results;
  results.push_back(TOKAGetDatai(ref));
  TOKASetDatai(ref, -5);
  results.push_back(TOKAGetDataf(ref));
  TOKASetDataf(ref, 0.25f);
  results.push_back(TOKAGetDatad(ref));
  TOKASetDatad(ref, 8.5);
  results.push_back(TOKAGetDatavi(ref, gInts, 9, 77));
  TOKASetDatavi(ref, gInts, -2, 3);
  results.push_back(TOKAGetDatavf(ref, nullptr, 1, -4));
  TOKASetDatavf(ref, gFloats, 0, 0);
  results.push_back(TOKAGetDatab(ref, gBytes, 1000, 2));
  TOKASetDatab(ref, gBytes, 3, 1);
  return results;
}

const std::vector<double> kZeros(6, 0.0);

class Datarefs : public TokaTest {
protected:
  const int pub = 1, con = 2;
  void SetUp() override {
    StartTwo();
    RecordErrorsOf(pub);
    RecordErrorsOf(con);
  }
};

TEST_F(Datarefs, ConsumerReachesEveryAccessorOfThePublisherInThePublishersContext) {
  TOKADataRef ref = As(pub, [] { return RegisterAll("test/all", 1, (void*)11, (void*)22); });
  ASSERT_NE(nullptr, ref);
  EXPECT_EQ(nullptr, TOKAFindDataRef("test/All"));  // names are case-sensitive
  EXPECT_EQ(nullptr, TOKAFindDataRef("test/al"));

  std::vector<double> results;
  RunAs(con, [&] {
    TOKADataRef found = TOKAFindDataRef("test/all");
    EXPECT_EQ(ref, found);
    EXPECT_EQ((std::vector<int>{63, 1, 1}), (std::vector<int>{TOKAGetDataRefTypes(found),
                                                              TOKACanWriteDataRef(found),
                                                              TOKAIsDataRefGood(found)}));
    results = UseEveryAccessor(found);
    EXPECT_EQ(con, TOKAGetMyID());
  });

  // The owner's results come back unchanged, nothing clamped or converted.
  EXPECT_EQ((std::vector<double>{42, 1.5, 2.25, -3, 99, 7}), results);
  EXPECT_EQ((Lines{"readInt(11)@1", "writeInt(22,-5)@1", "readFloat(11)@1",
                   "writeFloat(22,0.250000)@1", "readDouble(11)@1", "writeDouble(22,8.500000)@1",
                   "readIntArray" + Args((void*)11, gInts, 9, 77) + "@1",
                   "writeIntArray" + Args((void*)22, gInts, -2, 3) + "@1",
                   "readFloatArray(11,0,1,-4)@1",
                   "writeFloatArray" + Args((void*)22, gFloats, 0, 0) + "@1",
                   "readData" + Args((void*)11, gBytes, 1000, 2) + "@1",
                   "writeData" + Args((void*)22, gBytes, 3, 1) + "@1"}),
            Events());
}

TEST_F(Datarefs, MissingAccessorsReadOnlyDatarefsAndDisabledOwnersAreNeverCalled) {
  TOKADataRef intOnly = As(pub, [] { return RegisterInt("test/int", (void*)11); });
  TOKADataRef readOnly = As(pub, [] { return RegisterAll("test/ro", 0, (void*)11, (void*)22); });
  // No conversion between types: only the int accessors run.
  EXPECT_EQ((std::vector<double>{42, 0, 0, 0, 0, 0}), UseEveryAccessor(intOnly));
  EXPECT_EQ((Lines{"readInt(11)@1", "writeInt(11,-5)@1"}), TakeEvents());
  EXPECT_EQ(0, TOKACanWriteDataRef(readOnly));
  UseEveryAccessor(readOnly);
  for (const std::string& call : Events()) EXPECT_EQ(0u, call.rfind("read", 0)) << call;
  EXPECT_EQ(6u, TakeEvents().size());

  EXPECT_EQ(kZeros, UseEveryAccessor(nullptr));
  EXPECT_EQ((std::vector<int>{0, 0, 0}), (std::vector<int>{TOKAGetDataRefTypes(nullptr),
                                                           TOKACanWriteDataRef(nullptr),
                                                           TOKAIsDataRefGood(nullptr)}));
  TOKADisablePlugin(pub);
  Events().clear();
  EXPECT_EQ(kZeros, UseEveryAccessor(intOnly));
  EXPECT_EQ(Lines{}, Events());
  EXPECT_EQ(intOnly, TOKAFindDataRef("test/int"));  // disabled, not gone
  TOKAEnablePlugin(pub);
  EXPECT_EQ(42, TOKAGetDatai(intOnly));
  EXPECT_EQ(0, TOKAGetMyID());
}

TEST_F(Datarefs, HandlesStayValidAcrossAHundredThousandRegistrationsAndStrayPointersAreRejected) {
  const int count = 100000;
  auto name = [](int i) { return "test/n" + std::to_string(i); };
  std::vector<TOKADataRef> refs;
  RunAs(pub, [&] {
    for (int i = 0; i < count; ++i) refs.push_back(RegisterInt(name(i).c_str(), (void*)(intptr_t)i));
  });
  for (int i = 0; i < count; ++i) {
    if (refs[i] != TOKAFindDataRef(name(i).c_str()) || TOKAIsDataRefGood(refs[i]) != 1)
      FAIL() << "dataref " << i << " is lost";
  }
  for (int i : {0, 31, 32, 999, count - 1}) TOKAGetDatai(refs[i]);
  EXPECT_EQ((Lines{"readInt(0)@1", "readInt(31)@1", "readInt(32)@1", "readInt(999)@1",
                   "readInt(99999)@1"}),
            TakeEvents());

  // Records of one block lie side by side (992 to 999 share one); past the
  // last record of the last block lies nothing that was handed out.
  const size_t size = (char*)refs[1] - (char*)refs[0];
  ASSERT_EQ(7 * size, (size_t)((char*)refs[999] - (char*)refs[992]));
  int local = 0;
  const std::vector<void*> strays = {(char*)refs[5] + 1, (char*)refs[40] + 4,
                                     (char*)refs[500] + size / 2, (char*)refs[count - 1] + size,
                                     (char*)refs[32] - 4,  // the second block's own header
                                     &local};
  for (void* stray : strays) {
    EXPECT_EQ(0, TOKAIsDataRefGood(stray));
    RunAs(pub, [&] { TOKAUnregisterDataAccessor(stray); });
  }
  EXPECT_EQ(Lines(strays.size(), "error(Dataref is illegal and cannot be unregistered.)@1"),
            Events());
  EXPECT_EQ(1, TOKAIsDataRefGood(refs[5]));

  // Once its owner is unloaded a name finds nothing, until it is registered
  // again, into the very same record.
  TOKAShutdownPlugins();
  EXPECT_EQ(nullptr, TOKAFindDataRef(name(count - 1).c_str()));
  EXPECT_EQ(0, TOKAIsDataRefGood(refs[count - 1]));
  EXPECT_EQ(refs[count - 1], RegisterInt(name(count - 1).c_str(), nullptr));
  EXPECT_EQ(refs[count - 1], TOKAFindDataRef(name(count - 1).c_str()));
  EXPECT_EQ(1, TOKAIsDataRefGood(refs[count - 1]));
}

TEST_F(Datarefs, OnlyTheLiveOwnerHoldsANameAndAReRegistrationRevivesTheSameHandle) {
  TOKADataRef first = As(pub, [] { return RegisterInt("test/owned", (void*)1); });
  EXPECT_EQ(first, As(con, [] { return RegisterInt("test/owned", (void*)2); }));
  EXPECT_EQ(first, As(pub, [] { return RegisterInt("test/owned", (void*)3); }));
  TOKAGetDatai(first);  // the first owner's accessor
  const std::string taken = "error(Dataref is already registered by someone else.)";
  EXPECT_EQ((Lines{taken + "@2", taken + "@1", "readInt(1)@1"}), TakeEvents());

  const std::string notYours = "error(Dataref is not owned by you - you cannot unregsiter.)";
  RunAs(con, [&] { TOKAUnregisterDataAccessor(first); });
  EXPECT_EQ(1, TOKAIsDataRefGood(first));
  RunAs(pub, [&] { TOKAUnregisterDataAccessor(first); });
  EXPECT_EQ(nullptr, TOKAFindDataRef("test/owned"));
  EXPECT_EQ(0, TOKAIsDataRefGood(first));
  EXPECT_EQ(0, TOKAGetDatai(first));
  TOKASetDatai(first, 5);
  RunAs(pub, [&] { TOKAUnregisterDataAccessor(first); });  // no owner: not the caller's
  EXPECT_EQ((Lines{notYours + "@2", notYours + "@1"}), TakeEvents());

  // Registered again by anyone: the very same handle, with the new owner's
  // accessors.
  EXPECT_EQ(first, As(con, [] { return RegisterAll("test/owned", 1, (void*)4, (void*)5); }));
  EXPECT_EQ(first, TOKAFindDataRef("test/owned"));
  EXPECT_EQ(63, TOKAGetDataRefTypes(first));
  TOKAGetDatai(first);
  TOKASetDataf(first, 1);
  EXPECT_EQ((Lines{"readInt(4)@2", "writeFloat(5,1.000000)@2"}), Events());
}

// The simulator's build-stamp dataref logs what it receives.
void WriteStamp(void* refcon, void* values, int offset, int count) {
  Log(std::string((const char*)values, count) + "|" + Args(refcon, offset));
}
TOKADataRef RegisterStamp(const char* name) {
  return TOKARegisterDataAccessor(name, DataTypeData, 1, nullptr, nullptr, nullptr, nullptr,
                                  nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr,
                                  WriteStamp, nullptr, (void*)33);
}

TEST(BuildStamp, WrittenAtStartUpIntoTheSimulatorsLiveDatarefOfExactlyThatName) {
  TempTree tree;
  // The simulator publishes its datarefs before it starts the library.
  RegisterStamp("sim/version/TOKA_build_string");
  TOKAUnregisterDataAccessor(RegisterStamp("sim/version/toka_build_string"));
  TOKAInitializePlugins(tree.root().c_str(), HostTable(), 0);
  EXPECT_EQ(Lines{}, Events());
  TOKAShutdownPlugins();

  RegisterStamp("sim/version/toka_build_string");
  TOKAInitializePlugins(tree.root().c_str(), HostTable(), 0);
  ASSERT_EQ(1u, Events().size());
  EXPECT_TRUE(std::regex_match(Events()[0],
                               std::regex("[A-Z][a-z]{2} [ 123][0-9] [0-9]{4} "
                                          "[0-9]{2}:[0-9]{2}:[0-9]{2}\\0\\|\\(33,0\\)@0")))
      << Events()[0];
}

}  // namespace
