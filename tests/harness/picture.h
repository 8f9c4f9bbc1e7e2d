// PNG pictures that the reference host wrote, decoded for tests.
#ifndef TOKA_TEST_PICTURE_H
#define TOKA_TEST_PICTURE_H

#include <cstdint>
#include <string>

namespace toka_test {

struct Picture {
  int width = 0, height = 0;
  std::string rgb;  // rows from the top, three bytes a pixel

  // Reads the file; false unless it is a well-formed PNG whose chunks all
  // carry the right checksums.
  bool Read(const std::string& path);
  // The colour as 0xRRGGBB, in screen coordinates: y up from the bottom row.
  uint32_t At(int x, int y) const;
};

}  // namespace toka_test

#endif
