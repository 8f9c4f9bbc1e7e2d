// Paths handed from the host back to a plugin.
#ifndef TOKA_UTILITIES_PATHS_H
#define TOKA_UTILITIES_PATHS_H

// The host writes its paths in UTF-8; plugins that did not ask for native
// paths get them in the legacy encoding, cut to their 512-byte buffer.
void TOKAConvertHostPath(char* path);

#endif
