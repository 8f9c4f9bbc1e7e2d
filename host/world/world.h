// The simulated world around the aircraft: the earth and the local frame,
// the terrain, the scenery objects, and the events the world raises for the
// library.
#ifndef TOKA_HOST_WORLD_WORLD_H
#define TOKA_HOST_WORLD_WORLD_H

#include <string>

namespace toka_host {

// ---- coordinates and terrain -----------------------------------------------

// The local frame: metres from the origin (a point on the ellipsoid at the
// origin's latitude and longitude), x east, y up, z south.
void SetLocalOrigin(double latitude, double longitude);
void WorldToLocalPoint(double latitude, double longitude, double elevation, double& x, double& y,
                       double& z);
void LocalToWorldPoint(double x, double y, double z, double& latitude, double& longitude,
                       double& elevation);
// The local direction of "up" (the ellipsoid normal) at a world position.
void LocalUpAt(double latitude, double longitude, double up[3]);
// Great-circle distance in metres on the mean sphere.
double DistanceMetres(double lat1, double lon1, double lat2, double lon2);
void ResetTerrain();

// ---- objects ---------------------------------------------------------------

void ResetObjects();
// Completes the asynchronous loads asked for before this call.
void CompletePendingObjectLoads();
int LoadedObjectCount();

// ---- world events ----------------------------------------------------------

// Events reach the library at the start of the next frame, never from
// inside a service a plugin called.
void QueueEvent(int code, int param);
// Event 12. A scan finds only the packages not loaded yet; the user loads a
// package whether it is loaded or not.
void QueueSceneryPackage(const std::string& folder, bool evenIfLoaded);
void QueueSceneryScan();  // every package of "Custom Scenery" not loaded yet
void SendQueuedEvents();
void ResetEvents();

}  // namespace toka_host

#endif
