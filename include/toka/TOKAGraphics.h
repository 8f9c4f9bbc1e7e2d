/* Toka: graphics services of the simulator.
 *
 * Each call goes straight to the simulator, with its arguments unchanged and
 * its result returned as the simulator gave it; nothing is checked. Draw only
 * from draw callbacks and window draw callbacks, where the simulator's
 * renderer state and coordinates are set up. */
#ifndef TOKA_GRAPHICS_H
#define TOKA_GRAPHICS_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* Sets the simulator's renderer state: fog, the number of texture units in
 * use, lighting, alpha testing, alpha blending, depth testing and depth
 * writing (0 off, non-zero on). */
TOKA_API void TOKASetGraphicsState(int enableFog, int numberTexUnits, int enableLighting,
                                   int enableAlphaTesting, int enableAlphaBlending,
                                   int enableDepthTesting, int enableDepthWriting);

/* Binds texture number textureNum to texture unit textureUnit. */
TOKA_API void TOKABindTexture2d(int textureNum, int textureUnit);

/* Writes count new texture numbers into outTextureIDs. */
TOKA_API void TOKAGenerateTextureNumbers(int* outTextureIDs, int count);

/* The texture number of one of the simulator's own textures. */
TOKA_API int TOKAGetTexture(int textureID);

/* Converts latitude, longitude (degrees) and altitude (metres) into the
 * simulator's local coordinates, and back. */
TOKA_API void TOKAWorldToLocal(double latitude, double longitude, double altitude,
                               double* outX, double* outY, double* outZ);
TOKA_API void TOKALocalToWorld(double x, double y, double z,
                               double* outLatitude, double* outLongitude, double* outAltitude);

/* Draws the simulator's translucent dark box over a screen rectangle. */
TOKA_API void TOKADrawTranslucentDarkBox(int left, int top, int right, int bottom);

/* Draws text in colour rgb (three floats) at x, y; wordWrapWidth (may be
 * null) limits the line width; font is one of the simulator's fonts. */
TOKA_API void TOKADrawString(float* rgb, int x, int y, const char* text, int* wordWrapWidth,
                             int font);

/* Draws a number with the given digits and decimals, with a sign when
 * showSign is non-zero. */
TOKA_API void TOKADrawNumber(float* rgb, int x, int y, double value, int digits, int decimals,
                             int showSign, int font);

/* The size of one character of a font, and whether the font has digits
 * only. */
TOKA_API void TOKAGetFontDimensions(int font, int* outCharWidth, int* outCharHeight,
                                    int* outDigitsOnly);

/* The width in pixels of the first numChars characters of text. */
TOKA_API float TOKAMeasureString(int font, const char* text, int numChars);

TOKA_END_DECLS

#endif
