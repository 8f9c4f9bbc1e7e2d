// Graphics services: each goes straight to the host's renderer, in whatever
// plugin context is current. Doubles stay doubles: the host works in double
// precision for world coordinates, and narrowing would move objects.
#include "loader/host_interface.h"
#include "loader/survey.h"
#include "toka/TOKAGraphics.h"

TOKA_API void TOKASetGraphicsState(int enableFog, int numberTexUnits, int enableLighting,
                                   int enableAlphaTesting, int enableAlphaBlending,
                                   int enableDepthTesting, int enableDepthWriting) {
  TOKA_NOTE_CALL();
  gHostServices->SetGraphicsState(enableFog, numberTexUnits, enableLighting, enableAlphaTesting,
                                  enableAlphaBlending, enableDepthTesting, enableDepthWriting);
}

TOKA_API void TOKABindTexture2d(int textureNum, int textureUnit) {
  TOKA_NOTE_CALL();
  gHostServices->BindTexture2d(textureNum, textureUnit);
}

TOKA_API void TOKAGenerateTextureNumbers(int* outTextureIDs, int count) {
  TOKA_NOTE_CALL();
  gHostServices->GenerateTextureNumbers(outTextureIDs, count);
}

TOKA_API int TOKAGetTexture(int textureID) {
  TOKA_NOTE_CALL();
  return gHostServices->GetTexture(textureID);
}

TOKA_API void TOKAWorldToLocal(double latitude, double longitude, double altitude,
                               double* outX, double* outY, double* outZ) {
  TOKA_NOTE_CALL();
  gHostServices->WorldToLocal(latitude, longitude, altitude, outX, outY, outZ);
}

TOKA_API void TOKALocalToWorld(double x, double y, double z,
                               double* outLatitude, double* outLongitude, double* outAltitude) {
  TOKA_NOTE_CALL();
  gHostServices->LocalToWorld(x, y, z, outLatitude, outLongitude, outAltitude);
}

TOKA_API void TOKADrawTranslucentDarkBox(int left, int top, int right, int bottom) {
  TOKA_NOTE_CALL();
  gHostServices->DrawTranslucentDarkBox(left, top, right, bottom);
}

TOKA_API void TOKADrawString(float* rgb, int x, int y, const char* text, int* wordWrapWidth,
                             int font) {
  TOKA_NOTE_CALL();
  gHostServices->DrawString(rgb, x, y, text, wordWrapWidth, font);
}

TOKA_API void TOKADrawNumber(float* rgb, int x, int y, double value, int digits, int decimals,
                             int showSign, int font) {
  TOKA_NOTE_CALL();
  gHostServices->DrawNumber(rgb, x, y, value, digits, decimals, showSign, font);
}

TOKA_API void TOKAGetFontDimensions(int font, int* outCharWidth, int* outCharHeight,
                                    int* outDigitsOnly) {
  TOKA_NOTE_CALL();
  gHostServices->GetFontDimensions(font, outCharWidth, outCharHeight, outDigitsOnly);
}

TOKA_API float TOKAMeasureString(int font, const char* text, int numChars) {
  TOKA_NOTE_CALL();
  return gHostServices->MeasureString(font, text, numChars);
}
