// The fixture plugin's own file path, as the loader opened it.
#ifndef TOKA_TEST_SELF_PATH_H
#define TOKA_TEST_SELF_PATH_H

#include <dlfcn.h>

static const char* SelfPath() {
  Dl_info info;
  dladdr((void*)&SelfPath, &info);
  return info.dli_fname;
}

#endif
