// Pictures of the frame: read back from GL, written as PNG with stb's
// header-only encoder and compared with a reference picture read with its
// decoder, so that the host needs no image library of its own architecture.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wunused-function"
#pragma GCC diagnostic ignored "-Wunused-but-set-variable"
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>
#define STB_IMAGE_IMPLEMENTATION
#define STB_IMAGE_STATIC
#define STBI_ONLY_PNG
#include <stb/stb_image.h>
#pragma GCC diagnostic pop

#include <cstdio>
#include <cstdlib>

#include "host/render/gl.h"
#include "host/render/render.h"
#include "host/config.h"

namespace toka_host {

namespace {

bool WritePng(const std::string& path, int width, int height, const std::vector<uint32_t>& rgb) {
  std::vector<uint8_t> bytes(rgb.size() * 3);
  for (size_t i = 0; i < rgb.size(); ++i) {
    bytes[i * 3] = (uint8_t)(rgb[i] >> 16);
    bytes[i * 3 + 1] = (uint8_t)(rgb[i] >> 8);
    bytes[i * 3 + 2] = (uint8_t)rgb[i];
  }
  return stbi_write_png(path.c_str(), width, height, 3, bytes.data(), width * 3) != 0;
}

// "shots/gauge.png" -> "shots/gauge.WHAT.png"
std::string Beside(const std::string& file, const std::string& what) {
  std::string stem = file.size() > 4 ? file.substr(0, file.size() - 4) : file;
  return stem + "." + what + ".png";
}

}  // namespace

void PrepareReadBack() {
  // Whatever a plugin left bound or set for its own reads.
  gGL.BindFramebuffer(GL_FRAMEBUFFER, 0);
  gGL.BindBuffer(GL_PIXEL_PACK_BUFFER, 0);
  gGL.PixelStorei(GL_PACK_ALIGNMENT, 1);
  gGL.PixelStorei(GL_PACK_ROW_LENGTH, 0);
  gGL.PixelStorei(GL_PACK_SKIP_ROWS, 0);
  gGL.PixelStorei(GL_PACK_SKIP_PIXELS, 0);
}

void ReadFrame(std::vector<uint8_t>& rgba) {
  int width = gConfig.screenWidth, height = gConfig.screenHeight;
  rgba.resize((size_t)width * height * 4);
  PrepareReadBack();
  gGL.ReadPixels(0, 0, width, height, GL_RGBA, GL_UNSIGNED_BYTE, rgba.data());
}

std::vector<uint32_t> ReadScreen() {
  int width = gConfig.screenWidth, height = gConfig.screenHeight;
  std::vector<uint32_t> pixels((size_t)width * height, 0);
  if (!Rendering()) return pixels;
  std::vector<uint8_t> rgba;
  ReadFrame(rgba);
  // GL's rows run from the bottom, a picture's from the top.
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const uint8_t* p = &rgba[((size_t)y * width + x) * 4];
      pixels[(size_t)(height - 1 - y) * width + x] = (uint32_t)p[0] << 16 | p[1] << 8 | p[2];
    }
  return pixels;
}

uint32_t PixelAt(int x, int y) {
  if (!Rendering() || !OnScreen(x, y)) return 0;
  uint8_t p[4] = {0, 0, 0, 0};
  PrepareReadBack();
  gGL.ReadPixels(x, y, 1, 1, GL_RGBA, GL_UNSIGNED_BYTE, p);
  return (uint32_t)p[0] << 16 | p[1] << 8 | p[2];
}

bool SaveScreen(const std::string& path) {
  return Rendering() && WritePng(path, gConfig.screenWidth, gConfig.screenHeight, ReadScreen());
}

bool CompareScreen(const std::string& file, double percent, std::string& found) {
  int width = gConfig.screenWidth, height = gConfig.screenHeight;
  std::vector<uint32_t> actual = ReadScreen();
  std::string actualFile = Beside(file, "actual"), differenceFile = Beside(file, "diff");
  int fileWidth = 0, fileHeight = 0, channels = 0;
  uint8_t* reference = stbi_load(file.c_str(), &fileWidth, &fileHeight, &channels, 3);
  if (!reference || fileWidth != width || fileHeight != height) {
    found = reference ? "a picture of " + std::to_string(fileWidth) + "x" +
                            std::to_string(fileHeight) + " for a screen of " +
                            std::to_string(width) + "x" + std::to_string(height)
                      : "no picture in " + file;
    stbi_image_free(reference);
    found += WritePng(actualFile, width, height, actual) ? "; the frame is in " + actualFile
                                                         : "; cannot write " + actualFile;
    return false;
  }
  // The difference picture: the frame dimmed where it matches, red where
  // it does not.
  std::vector<uint32_t> difference(actual.size());
  size_t outside = 0;
  for (size_t i = 0; i < actual.size(); ++i) {
    uint32_t expected = (uint32_t)reference[i * 3] << 16 | reference[i * 3 + 1] << 8 | reference[i * 3 + 2];
    bool same = PixelMatches(actual[i], expected, kPixelTolerance);
    outside += !same;
    difference[i] = same ? (actual[i] >> 2 & 0x3F3F3F) : 0xFF0000;
  }
  stbi_image_free(reference);
  double share = 100.0 * outside / actual.size();
  if (outside == 0 || (percent >= 0 && share <= percent)) return true;
  char text[160];
  std::snprintf(text, sizeof text, "%zu pixels (%.3f%%) differ by more than %d", outside, share,
                kPixelTolerance);
  found = text;
  bool written = WritePng(actualFile, width, height, actual) &&
                 WritePng(differenceFile, width, height, difference);
  found += written ? "; the frame is in " + actualFile + ", the differences in " + differenceFile
                   : "; cannot write " + actualFile;
  return false;
}

bool PixelMatches(uint32_t actual, uint32_t expected, int tolerance) {
  for (int shift = 0; shift <= 16; shift += 8)
    if (std::abs((int)(actual >> shift & 0xFF) - (int)(expected >> shift & 0xFF)) > tolerance)
      return false;
  return true;
}

}  // namespace toka_host
