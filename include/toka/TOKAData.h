/* Toka: datarefs and shared data.
 *
 * A dataref is a named value published by one party (a plugin, or the
 * simulator as plugin 0) through accessor callbacks, and read or written by
 * anyone through an opaque handle. The library keeps no value of its own:
 * every get or set calls the owner's accessor, with the owner as the calling
 * plugin for the duration of the call.
 *
 * Handles live as long as the process. When the owner unregisters the
 * dataref or is unloaded, a handle held elsewhere stays safe to pass: gets
 * return 0 and sets do nothing until some plugin registers the same name
 * again, which revives that very handle. */
#ifndef TOKA_DATA_H
#define TOKA_DATA_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* Type bits: a dataref's types are the bits of the accessors it serves. */
typedef int TOKADataTypeID;
enum {
  DataTypeInt = 1,         /* one 32-bit int */
  DataTypeFloat = 2,       /* one 32-bit float */
  DataTypeDouble = 4,      /* one 64-bit double */
  DataTypeFloatArray = 8,  /* array of float */
  DataTypeIntArray = 16,   /* array of int */
  DataTypeData = 32        /* untyped bytes */
};

/* Accessor callbacks. Readers get the read refcon, writers the write refcon
 * given at registration. For arrays and bytes the meaning of values, offset
 * and max/count (a null values pointer included) is the owner's own: the
 * library passes them through and returns the reader's result unchanged. */
typedef int (*TOKAGetDatai_f)(void* refcon);
typedef void (*TOKASetDatai_f)(void* refcon, int value);
typedef float (*TOKAGetDataf_f)(void* refcon);
typedef void (*TOKASetDataf_f)(void* refcon, float value);
typedef double (*TOKAGetDatad_f)(void* refcon);
typedef void (*TOKASetDatad_f)(void* refcon, double value);
typedef int (*TOKAGetDatavi_f)(void* refcon, int* values, int offset, int max);
typedef void (*TOKASetDatavi_f)(void* refcon, int* values, int offset, int count);
typedef int (*TOKAGetDatavf_f)(void* refcon, float* values, int offset, int max);
typedef void (*TOKASetDatavf_f)(void* refcon, float* values, int offset, int count);
typedef int (*TOKAGetDatab_f)(void* refcon, void* values, int offset, int max);
typedef void (*TOKASetDatab_f)(void* refcon, void* values, int offset, int count);

/* The handle of the dataref registered under name (case matters), or null
 * when nobody has registered it or its owner has gone. Look the name up
 * again later to get the handle once it is registered. */
TOKA_API TOKADataRef TOKAFindDataRef(const char* name);

/* Publishes name with the calling plugin as owner. Any callback may be null;
 * writable 0 refuses every set. Returns the handle. If the name was
 * registered before and its owner has gone, the earlier handle is reused.
 * If a live owner holds the name, reports "Dataref is already registered by
 * someone else." and returns that owner's handle, changing nothing (this
 * happens also when the caller itself is the owner). A null name reports
 * "Null dataref name passed to TOKARegisterDataAccessor." and returns null. */
TOKA_API TOKADataRef TOKARegisterDataAccessor(
    const char* name, TOKADataTypeID types, int writable, TOKAGetDatai_f readInt,
    TOKASetDatai_f writeInt, TOKAGetDataf_f readFloat, TOKASetDataf_f writeFloat,
    TOKAGetDatad_f readDouble, TOKASetDatad_f writeDouble, TOKAGetDatavi_f readIntArray,
    TOKASetDatavi_f writeIntArray, TOKAGetDatavf_f readFloatArray,
    TOKASetDatavf_f writeFloatArray, TOKAGetDatab_f readData, TOKASetDatab_f writeData,
    void* readRefcon, void* writeRefcon);

/* Withdraws the calling plugin's accessors; the handle stays valid (see
 * above). Reports "Dataref is illegal and cannot be unregistered." for a
 * handle the library never gave out and "Dataref is not owned by you - you
 * cannot unregsiter." when another plugin owns the dataref. */
TOKA_API void TOKAUnregisterDataAccessor(TOKADataRef ref);

/* 1 if ref is a handle the library gave out and its dataref has an owner. */
TOKA_API int TOKAIsDataRefGood(TOKADataRef ref);

/* The writable flag given at registration; 0 for a null handle. */
TOKA_API int TOKACanWriteDataRef(TOKADataRef ref);

/* The type bits given at registration; 0 for a null handle. */
TOKA_API TOKADataTypeID TOKAGetDataRefTypes(TOKADataRef ref);

/* Typed gets and sets. Each calls the owner's accessor of that type; there
 * is no conversion between types. A get returns 0 when the handle is null,
 * the owner serves no such accessor, has gone or is disabled. A set does
 * nothing in those cases, nor when the dataref is not writable. Handles are
 * not checked beyond null: pass only handles the library gave out. */
TOKA_API int TOKAGetDatai(TOKADataRef ref);
TOKA_API void TOKASetDatai(TOKADataRef ref, int value);
TOKA_API float TOKAGetDataf(TOKADataRef ref);
TOKA_API void TOKASetDataf(TOKADataRef ref, float value);
TOKA_API double TOKAGetDatad(TOKADataRef ref);
TOKA_API void TOKASetDatad(TOKADataRef ref, double value);
TOKA_API int TOKAGetDatavi(TOKADataRef ref, int* values, int offset, int max);
TOKA_API void TOKASetDatavi(TOKADataRef ref, int* values, int offset, int count);
TOKA_API int TOKAGetDatavf(TOKADataRef ref, float* values, int offset, int max);
TOKA_API void TOKASetDatavf(TOKADataRef ref, float* values, int offset, int count);
TOKA_API int TOKAGetDatab(TOKADataRef ref, void* values, int offset, int max);
TOKA_API void TOKASetDatab(TOKADataRef ref, void* values, int offset, int count);

/* Shared data: a value stored by the library under an agreed name, owned by
 * no plugin, and read and written through the ordinary dataref calls. */

/* Called after every write of a shared item, even one that changes nothing. */
typedef void (*TOKADataChanged_f)(void* refcon);

/* Shares name as type (exactly one type bit). The first share creates the
 * item, which stays for the life of the process, and registers it as a
 * writable dataref serving that one type. Storage starts at one element
 * (4 bytes for ints, floats and their arrays, 8 for a double, 1 byte for
 * bytes), not cleared, and grows when something larger is written; arrays
 * report their element count to a get with null values. A non-null callback
 * is subscribed with refcon (twice if shared twice) and is called, as the
 * calling plugin, after every write by anyone, the writer included, in
 * order of subscription. Returns 1, or 0 if name is already shared with
 * another type (then nothing is subscribed). Subscriptions end when the
 * subscribing plugin is unloaded. A null name reports "Null name passed to
 * TOKAShareData." and returns 0. */
TOKA_API int TOKAShareData(const char* name, TOKADataTypeID type, TOKADataChanged_f callback,
                           void* refcon);

/* Removes the calling plugin's first subscription of (callback, refcon) to
 * the item of that name and type. Returns 1 if one was removed, else 0
 * (always 0 for a null callback). The item and its value stay. */
TOKA_API int TOKAUnshareData(const char* name, TOKADataTypeID type, TOKADataChanged_f callback,
                             void* refcon);

TOKA_END_DECLS

#endif
