/* Toka: camera control.
 *
 * One plugin at a time may drive the simulator's camera. */
#ifndef TOKA_CAMERA_H
#define TOKA_CAMERA_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* How long a plugin keeps the camera. */
enum {
  TOKA_ControlCameraUntilViewChanges = 1, /* until the simulator's view changes */
  TOKA_ControlCameraForever = 2           /* until the plugin gives it up */
};

/* The seven camera values, in the simulator's order. */
typedef struct TOKACameraPosition_t {
  float x, y, z;
  float pitch, heading, roll;
  float zoom;
} TOKACameraPosition_t;

/* Called on every camera update while the plugin holds the camera, with
 * isLosingControl 0 and the current position, which it may change. Return
 * 1 to keep the camera (the position is then used), 0 to give it up.
 * Called once more with a null position and isLosingControl 1 when control
 * is taken away. */
typedef int (*TOKACameraControl_f)(TOKACameraPosition_t* cameraPosition, int isLosingControl,
                                   void* refcon);

/* Takes the camera for the calling plugin, from whichever plugin held it
 * (that one is not told). howLong is one of TOKA_ControlCamera...: any value
 * but 1 keeps the camera through view changes. */
TOKA_API void TOKAControlCamera(int howLong, TOKACameraControl_f callback, void* refcon);

/* Gives the camera back to the simulator, whoever holds it. The callback is
 * not called. */
TOKA_API void TOKADontControlCamera(void);

/* 1 while a plugin holds the camera, else 0. While it is held, writes the
 * howLong value it was taken with into *outHowLong when that is not null. */
TOKA_API int TOKAIsCameraBeingControlled(int* outHowLong);

/* Reads the simulator's current camera position into *outPosition. */
TOKA_API void TOKAReadCameraPosition(TOKACameraPosition_t* outPosition);

TOKA_END_DECLS

#endif
