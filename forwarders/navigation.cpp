// Navigation, FMS and GPS services: the host owns the navigation database,
// the flight plan and the GPS, so each call goes straight to it.
#include "loader/host_interface.h"
#include "loader/survey.h"
#include "toka/TOKANavigation.h"

TOKA_API TOKANavRef TOKAGetFirstNavAid(void) {
  TOKA_NOTE_CALL();
  return gHostServices->GetFirstNavAid();
}

TOKA_API TOKANavRef TOKAGetNextNavAid(TOKANavRef navAid) {
  TOKA_NOTE_CALL();
  return gHostServices->GetNextNavAid(navAid);
}

TOKA_API TOKANavRef TOKAFindFirstNavAidOfType(int type) {
  TOKA_NOTE_CALL();
  return gHostServices->FindFirstNavAidOfType(type);
}

TOKA_API TOKANavRef TOKAFindLastNavAidOfType(int type) {
  TOKA_NOTE_CALL();
  return gHostServices->FindLastNavAidOfType(type);
}

TOKA_API TOKANavRef TOKAFindNavAid(const char* nameFragment, const char* idFragment,
                                   float* latitude, float* longitude, int* frequency, int type) {
  TOKA_NOTE_CALL();
  return gHostServices->FindNavAid(nameFragment, idFragment, latitude, longitude, frequency, type);
}

TOKA_API int TOKAGetNavAidInfo(TOKANavRef navAid, int* outType, float* outLatitude,
                               float* outLongitude, float* outHeight, int* outFrequency,
                               float* outHeading, char* outID, char* outName, char* outReg) {
  TOKA_NOTE_CALL();
  return gHostServices->GetNavAidInfo(navAid, outType, outLatitude, outLongitude, outHeight,
                                      outFrequency, outHeading, outID, outName, outReg);
}

TOKA_API int TOKACountFMSEntries(void) {
  TOKA_NOTE_CALL();
  return gHostServices->CountFMSEntries();
}

TOKA_API int TOKAGetDisplayedFMSEntry(void) {
  TOKA_NOTE_CALL();
  return gHostServices->GetDisplayedFMSEntry();
}

TOKA_API int TOKAGetDestinationFMSEntry(void) {
  TOKA_NOTE_CALL();
  return gHostServices->GetDestinationFMSEntry();
}

TOKA_API int TOKASetDisplayedFMSEntry(int index) {
  TOKA_NOTE_CALL();
  return gHostServices->SetDisplayedFMSEntry(index);
}

TOKA_API int TOKASetDestinationFMSEntry(int index) {
  TOKA_NOTE_CALL();
  return gHostServices->SetDestinationFMSEntry(index);
}

TOKA_API int TOKAGetFMSEntryInfo(int index, int* outType, char* outID, TOKANavRef* outRef,
                                 int* outAltitude, float* outLatitude, float* outLongitude) {
  TOKA_NOTE_CALL();
  return gHostServices->GetFMSEntryInfo(index, outType, outID, outRef, outAltitude, outLatitude,
                                        outLongitude);
}

TOKA_API int TOKASetFMSEntryInfo(int index, TOKANavRef navAid, int altitude) {
  TOKA_NOTE_CALL();
  return gHostServices->SetFMSEntryInfo(index, navAid, altitude);
}

TOKA_API int TOKASetFMSEntryLatLon(int index, float latitude, float longitude, int altitude) {
  TOKA_NOTE_CALL();
  return gHostServices->SetFMSEntryLatLon(index, latitude, longitude, altitude);
}

TOKA_API int TOKAClearFMSEntry(int index) {
  TOKA_NOTE_CALL();
  return gHostServices->ClearFMSEntry(index);
}

TOKA_API int TOKAGetGPSDestinationType(void) {
  TOKA_NOTE_CALL();
  return gHostServices->GetGPSDestinationType();
}

TOKA_API int TOKAGetGPSDestination(void) {
  TOKA_NOTE_CALL();
  return gHostServices->GetGPSDestination();
}
