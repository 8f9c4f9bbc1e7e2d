// Navigation, FMS and GPS services: the host owns the navigation database,
// the flight plan and the GPS, so each call goes straight to it.
#include "loader/host_interface.h"
#include "toka/TOKANavigation.h"

TOKA_API TOKANavRef TOKAGetFirstNavAid(void) {
  return gHostServices->GetFirstNavAid();
}

TOKA_API TOKANavRef TOKAGetNextNavAid(TOKANavRef navAid) {
  return gHostServices->GetNextNavAid(navAid);
}

TOKA_API TOKANavRef TOKAFindFirstNavAidOfType(int type) {
  return gHostServices->FindFirstNavAidOfType(type);
}

TOKA_API TOKANavRef TOKAFindLastNavAidOfType(int type) {
  return gHostServices->FindLastNavAidOfType(type);
}

TOKA_API TOKANavRef TOKAFindNavAid(const char* nameFragment, const char* idFragment,
                                   float* latitude, float* longitude, int* frequency, int type) {
  return gHostServices->FindNavAid(nameFragment, idFragment, latitude, longitude, frequency, type);
}

TOKA_API int TOKAGetNavAidInfo(TOKANavRef navAid, int* outType, float* outLatitude,
                               float* outLongitude, float* outHeight, int* outFrequency,
                               float* outHeading, char* outID, char* outName, char* outReg) {
  return gHostServices->GetNavAidInfo(navAid, outType, outLatitude, outLongitude, outHeight,
                                      outFrequency, outHeading, outID, outName, outReg);
}

TOKA_API int TOKACountFMSEntries(void) {
  return gHostServices->CountFMSEntries();
}

TOKA_API int TOKAGetDisplayedFMSEntry(void) {
  return gHostServices->GetDisplayedFMSEntry();
}

TOKA_API int TOKAGetDestinationFMSEntry(void) {
  return gHostServices->GetDestinationFMSEntry();
}

TOKA_API int TOKASetDisplayedFMSEntry(int index) {
  return gHostServices->SetDisplayedFMSEntry(index);
}

TOKA_API int TOKASetDestinationFMSEntry(int index) {
  return gHostServices->SetDestinationFMSEntry(index);
}

TOKA_API int TOKAGetFMSEntryInfo(int index, int* outType, char* outID, TOKANavRef* outRef,
                                 int* outAltitude, float* outLatitude, float* outLongitude) {
  return gHostServices->GetFMSEntryInfo(index, outType, outID, outRef, outAltitude, outLatitude,
                                        outLongitude);
}

TOKA_API int TOKASetFMSEntryInfo(int index, TOKANavRef navAid, int altitude) {
  return gHostServices->SetFMSEntryInfo(index, navAid, altitude);
}

TOKA_API int TOKASetFMSEntryLatLon(int index, float latitude, float longitude, int altitude) {
  return gHostServices->SetFMSEntryLatLon(index, latitude, longitude, altitude);
}

TOKA_API int TOKAClearFMSEntry(int index) {
  return gHostServices->ClearFMSEntry(index);
}

TOKA_API int TOKAGetGPSDestinationType(void) {
  return gHostServices->GetGPSDestinationType();
}

TOKA_API int TOKAGetGPSDestination(void) {
  return gHostServices->GetGPSDestination();
}
