// A host services table whose 69 services record every call and answer as
// the test says.
#ifndef TOKA_TEST_FAKE_HOST_H
#define TOKA_TEST_FAKE_HOST_H

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "toka/TOKAHost.h"

namespace toka_test {

// An argument word of a host service: 32 bits in the 32-bit build, 64 in the
// 64-bit one. A double takes two words in the first and one in the second;
// smaller values take the low bytes of a word.
using HostWord = uintptr_t;

// Appends value to words as the words it takes.
template <class T>
void PushWords(std::vector<HostWord>& words, T value) {
  constexpr size_t count = (sizeof(T) + sizeof(HostWord) - 1) / sizeof(HostWord);
  HostWord pair[2] = {0, 0};
  static_assert(count <= 2, "one or two words");
  __builtin_memcpy(pair, &value, sizeof(T));
  words.insert(words.end(), pair, pair + count);
}

struct HostCall {
  int slot = 0;
  std::vector<HostWord> words;       // every argument word, doubles as two in 32-bit
  std::vector<std::string> strings;  // copies of the const char* arguments that were not null

  // Argument word i as a value of type T (pointers, ints, floats).
  template <class T>
  T arg(size_t i) const {
    T value;
    static_assert(sizeof(T) <= sizeof(HostWord), "one word");
    __builtin_memcpy(&value, &words.at(i), sizeof(T));
    return value;
  }
};

class FakeHost {
public:
  static FakeHost& Get();

  TOKAHostServices table;
  std::vector<HostCall> calls;
  std::string log;  // everything written through the debug-string service (29)

  // Answer of a service that returns an int or a pointer (or acts on its
  // output arguments): slot -> handler. Without one the service returns 0
  // (and the path services write an empty string).
  std::function<intptr_t(const HostCall&)> onCall[71];
  // Answer of the two services that return floating point (14 and 62).
  std::function<double(const HostCall&)> onFloatCall[71];

  std::vector<HostCall> CallsTo(int slot) const;
  size_t CountCalls(int slot) const;
  // Forgets recorded calls and the log, keeping the handlers.
  void ClearRecords();

private:
  FakeHost();
};

// The fake host's table, as passed to TOKAInitializePlugins.
inline TOKAHostServices* HostTable() { return &FakeHost::Get().table; }

}  // namespace toka_test

#endif
