// Paths handed from the host back to a plugin.
#ifndef TOKA_UTILITIES_PATHS_H
#define TOKA_UTILITIES_PATHS_H

// A plugin's buffer for a path the host writes.
constexpr int kPathBufferSize = 512;

// The host writes its paths in UTF-8; plugins that did not ask for native
// paths get them in the legacy encoding, cut to their 512-byte buffer.
void TOKAConvertHostPath(char* path);

// The host fills every path buffer it is asked to; where the plugin passed
// none, it fills the caller's scratch buffer (of kPathBufferSize), emptied
// first, so that the plugin's null is never written through.
inline char* PathBufferOrScratch(char* buffer, char* scratch) {
  if (buffer) return buffer;
  scratch[0] = 0;
  return scratch;
}

#endif
