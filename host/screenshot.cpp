// Pictures of the screen: the framebuffer as a PNG file, written with
// libpng.
#include <png.h>

#include <cstdio>

#include "host/host.h"

namespace toka_host {

namespace {

// libpng reports a failure by jumping back to the setjmp below, so nothing
// between the two may need its destructor run: the rows are owned by the
// caller.
bool WritePng(FILE* file, int width, int height, png_bytep* rows) {
  png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
  if (!png) return false;
  png_infop info = png_create_info_struct(png);
  if (!info || setjmp(png_jmpbuf(png))) {
    png_destroy_write_struct(&png, &info);
    return false;
  }
  png_init_io(png, file);
  png_set_IHDR(png, info, (png_uint_32)width, (png_uint_32)height, 8, PNG_COLOR_TYPE_RGB,
               PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
  png_write_info(png, info);
  png_write_image(png, rows);
  png_write_end(png, nullptr);
  png_destroy_write_struct(&png, &info);
  return true;
}

}  // namespace

bool SaveScreen(const std::string& path) {
  int width = gConfig.screenWidth, height = gConfig.screenHeight;
  if ((int)gFramebuffer.size() != width * height) return false;
  // The framebuffer's rows run from the top, as a picture's do.
  std::vector<png_byte> pixels((size_t)width * height * 3);
  std::vector<png_bytep> rows((size_t)height);
  for (size_t i = 0; i < gFramebuffer.size(); ++i) {
    pixels[i * 3] = (png_byte)(gFramebuffer[i] >> 16);
    pixels[i * 3 + 1] = (png_byte)(gFramebuffer[i] >> 8);
    pixels[i * 3 + 2] = (png_byte)gFramebuffer[i];
  }
  for (int y = 0; y < height; ++y) rows[y] = &pixels[(size_t)y * width * 3];
  FILE* file = std::fopen(path.c_str(), "wb");
  if (!file) return false;
  bool written = WritePng(file, width, height, rows.data());
  return std::fclose(file) == 0 && written;
}

}  // namespace toka_host
