#include "harness/picture.h"

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wunused-function"
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#include <stb/stb_image.h>
#pragma GCC diagnostic pop

#include <fstream>
#include <iterator>

namespace toka_test {

namespace {

uint32_t BigEndianWord(const std::string& file, size_t at) {
  return (uint32_t)(uint8_t)file[at] << 24 | (uint32_t)(uint8_t)file[at + 1] << 16 |
         (uint32_t)(uint8_t)file[at + 2] << 8 | (uint8_t)file[at + 3];
}

// The decoder skips checksums: every chunk's CRC is checked here, up to IEND,
// which must end the file.
bool ChunksIntact(const std::string& file) {
  if (file.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0) return false;
  for (size_t at = 8; at + 12 <= file.size();) {
    uint32_t length = BigEndianWord(file, at), crc = 0xFFFFFFFFu;
    if (at + 12 + length > file.size()) return false;
    for (size_t i = at + 4; i < at + 8 + length; ++i) {
      crc ^= (uint8_t)file[i];
      for (int bit = 0; bit < 8; ++bit) crc = crc >> 1 ^ (0xEDB88320u & (0u - (crc & 1)));
    }
    if ((crc ^ 0xFFFFFFFFu) != BigEndianWord(file, at + 8 + length)) return false;
    if (file.compare(at + 4, 4, "IEND") == 0) return at + 12 == file.size();
    at += 12 + length;
  }
  return false;
}

}  // namespace

bool Picture::Read(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::string file((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (!ChunksIntact(file)) return false;
  int channels = 0;
  stbi_uc* pixels = stbi_load_from_memory((const stbi_uc*)file.data(), (int)file.size(), &width,
                                          &height, &channels, 3);
  if (!pixels) return false;
  rgb.assign((const char*)pixels, (size_t)width * height * 3);
  stbi_image_free(pixels);
  return true;
}

uint32_t Picture::At(int x, int y) const {
  size_t at = ((size_t)(height - 1 - y) * width + x) * 3;
  return (uint32_t)(uint8_t)rgb[at] << 16 | (uint32_t)(uint8_t)rgb[at + 1] << 8 |
         (uint8_t)rgb[at + 2];
}

}  // namespace toka_test
