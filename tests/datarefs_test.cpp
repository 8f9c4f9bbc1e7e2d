// Datarefs: publishing, finding, reading and writing through the owner's
// accessors, handle validation and ownership.
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

int gInts[1];  // the arrays UseEveryAccessor passes
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
  results.push_back(TOKAGetDatavf(ref, gFloats, 1, -4));
  TOKASetDatavf(ref, gFloats, 0, 0);
  results.push_back(TOKAGetDatab(ref, gBytes, 1000, 2));
  TOKASetDatab(ref, gBytes, 3, 1);
  return results;
}

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
  std::vector<double> results;
  RunAs(con, [&] {
    EXPECT_EQ(ref, TOKAFindDataRef("test/all"));
    EXPECT_EQ(nullptr, TOKAFindDataRef("test/All"));  // names are case-sensitive
    results = UseEveryAccessor(ref);
    EXPECT_EQ(con, TOKAGetMyID());
  });
  // The owner's results come back unchanged, nothing clamped or converted.
  EXPECT_EQ((std::vector<double>{42, 1.5, 2.25, -3, 99, 7}), results);
  EXPECT_EQ((Lines{"readInt(11)@1", "writeInt(22,-5)@1", "readFloat(11)@1",
                   "writeFloat(22,0.250000)@1", "readDouble(11)@1", "writeDouble(22,8.500000)@1",
                   "readIntArray" + Args((void*)11, gInts, 9, 77) + "@1",
                   "writeIntArray" + Args((void*)22, gInts, -2, 3) + "@1",
                   "readFloatArray" + Args((void*)11, gFloats, 1, -4) + "@1",
                   "writeFloatArray" + Args((void*)22, gFloats, 0, 0) + "@1",
                   "readData" + Args((void*)11, gBytes, 1000, 2) + "@1",
                   "writeData" + Args((void*)22, gBytes, 3, 1) + "@1"}),
            Events());
}

TEST_F(Datarefs, ReadOnlyDatarefsAndDisabledOwnersAreNeverCalled) {
  TOKADataRef readOnly = As(pub, [] { return RegisterAll("test/ro", 0, (void*)11, (void*)22); });
  EXPECT_EQ(0, TOKACanWriteDataRef(readOnly));
  UseEveryAccessor(readOnly);
  for (const std::string& call : Events()) EXPECT_EQ(0u, call.rfind("read", 0)) << call;
  EXPECT_EQ(6u, TakeEvents().size());
  TOKADisablePlugin(pub);
  Events().clear();
  EXPECT_EQ(std::vector<double>(6, 0.0), UseEveryAccessor(readOnly));
  EXPECT_EQ(Lines{}, Events());
}

TEST_F(Datarefs, OnlyTheLiveOwnerHoldsANameAndStrayHandlesAreRejected) {
  TOKADataRef first = As(pub, [] { return RegisterInt("test/owned", (void*)1); });
  TOKADataRef last = As(pub, [] { return RegisterInt("test/last", (void*)2); });
  EXPECT_EQ(first, As(con, [] { return RegisterInt("test/owned", (void*)3); }));
  TOKAGetDatai(first);  // the first owner's accessor
  EXPECT_EQ((Lines{"error(Dataref is already registered by someone else.)@2", "readInt(1)@1"}),
            TakeEvents());

  // Past the last record handed out, or inside a record, lies no dataref.
  const size_t size = (char*)last - (char*)first;
  for (void* stray : {(void*)((char*)first + 1), (void*)((char*)last + size)}) {
    EXPECT_EQ(0, TOKAIsDataRefGood(stray));
    RunAs(pub, [&] { TOKAUnregisterDataAccessor(stray); });
  }
  const std::string illegal = "error(Dataref is illegal and cannot be unregistered.)@1";
  EXPECT_EQ((Lines{illegal, illegal}), TakeEvents());

  RunAs(con, [&] { TOKAUnregisterDataAccessor(first); });
  EXPECT_EQ(1, TOKAIsDataRefGood(first));
  RunAs(pub, [&] { TOKAUnregisterDataAccessor(first); });
  EXPECT_EQ(nullptr, TOKAFindDataRef("test/owned"));
  EXPECT_EQ(0, TOKAIsDataRefGood(first));
  EXPECT_EQ((Lines{"error(Dataref is not owned by you - you cannot unregsiter.)@2"}),
            TakeEvents());
  // Registered again by anyone: the very same handle, with the new owner's
  // accessors.
  EXPECT_EQ(first, As(con, [] { return RegisterInt("test/owned", (void*)4); }));
  TOKAGetDatai(first);
  EXPECT_EQ((Lines{"readInt(4)@2"}), Events());
}

// Records come in blocks beside an index of where they lie: every handle of
// a hundred thousand stays found and good, strays between and past the
// blocks do not, and a name freed by its owner's unload is found again in
// the very same record once re-registered.
TEST_F(Datarefs, HandlesStayRightAcrossAHundredThousandRegistrations) {
  const int count = 100000;
  auto name = [](int i) { return "test/n" + std::to_string(i); };
  std::vector<TOKADataRef> refs;
  RunAs(pub, [&] {
    for (int i = 0; i < count; ++i) refs.push_back(RegisterInt(name(i).c_str(), (void*)(intptr_t)i));
  });
  for (int i = 0; i < count; ++i)
    if (refs[i] != TOKAFindDataRef(name(i).c_str()) || TOKAIsDataRefGood(refs[i]) != 1)
      FAIL() << "dataref " << i << " is lost";
  const size_t size = (char*)refs[1] - (char*)refs[0];
  int local = 0;
  for (void* stray : {(void*)((char*)refs[count - 1] + size), (void*)((char*)refs[32] - 4), (void*)&local})
    EXPECT_EQ(0, TOKAIsDataRefGood(stray));
  TOKAShutdownPlugins();
  EXPECT_EQ(0, TOKAIsDataRefGood(refs[count - 1]));
  EXPECT_EQ(refs[count - 1], RegisterInt(name(count - 1).c_str(), nullptr));
  EXPECT_EQ(refs[count - 1], TOKAFindDataRef(name(count - 1).c_str()));
}

}  // namespace
