// Pictures of the screen: the framebuffer as a PNG file, written with the
// header-only encoder of stb, so that the host needs no image library of its
// own architecture.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmissing-field-initializers"
#pragma GCC diagnostic ignored "-Wsign-compare"
#pragma GCC diagnostic ignored "-Wunused-function"
#define STB_IMAGE_WRITE_IMPLEMENTATION
#define STB_IMAGE_WRITE_STATIC
#include <stb/stb_image_write.h>
#pragma GCC diagnostic pop

#include <cstdint>

#include "host/host.h"

namespace toka_host {

bool SaveScreen(const std::string& path) {
  int width = gConfig.screenWidth, height = gConfig.screenHeight;
  if ((int)gFramebuffer.size() != width * height) return false;
  // The framebuffer's rows run from the top, as a picture's do.
  std::vector<uint8_t> pixels((size_t)width * height * 3);
  for (size_t i = 0; i < gFramebuffer.size(); ++i) {
    pixels[i * 3] = (uint8_t)(gFramebuffer[i] >> 16);
    pixels[i * 3 + 1] = (uint8_t)(gFramebuffer[i] >> 8);
    pixels[i * 3 + 2] = (uint8_t)gFramebuffer[i];
  }
  return stbi_write_png(path.c_str(), width, height, 3, pixels.data(), width * 3) != 0;
}

}  // namespace toka_host
