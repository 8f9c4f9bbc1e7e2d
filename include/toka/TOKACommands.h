/* Toka: commands and their handlers.
 *
 * Commands are named actions that the simulator keeps; a command reference
 * comes from TOKACreateCommand or TOKAFindCommand and stays valid for the
 * life of the process. Plugins issue commands and handle them, before or
 * after the simulator's own handling. */
#ifndef TOKA_COMMANDS_H
#define TOKA_COMMANDS_H

#include "TOKADefs.h"

TOKA_BEGIN_DECLS

/* Phases passed to command handlers. */
#define TOKA_COMMAND_BEGIN 0    /* the command went down */
#define TOKA_COMMAND_CONTINUE 1 /* still held; sent repeatedly */
#define TOKA_COMMAND_END 2      /* released */

/* A command handler, called in the context of the plugin that registered
 * it. Returns non-zero to let the command go on to the next handler (and
 * the simulator), 0 to consume it. */
typedef int (*TOKACommandCallback_f)(TOKACommandRef command, int phase, void* refcon);

/* Creates a command (or finds the simulator's command of that name) and
 * returns it. Names starting with "sim/" belong to the simulator: such a
 * name reports "Plugin is illegally registering a command with the prefix
 * sim/" and logs "It is illegal to register a command starting with sim/"
 * as a warning, and the command is created all the same. A null name
 * reports "Null command name passed to TOKACreateCommand." and returns
 * null. */
TOKA_API TOKACommandRef TOKACreateCommand(const char* name, const char* description);

/* The command of that name, or whatever the simulator answers (null when
 * it knows none). Null for a null name, without asking the simulator. */
TOKA_API TOKACommandRef TOKAFindCommand(const char* name);

/* Presses a command down and holds it for the calling plugin: the simulator
 * gets it repeated while the plugin is enabled, until TOKACommandEnd or the
 * plugin is unloaded. Holding a command twice holds it once. */
TOKA_API void TOKACommandBegin(TOKACommandRef command);

/* Releases a command the calling plugin holds. */
TOKA_API void TOKACommandEnd(TOKACommandRef command);

/* Presses and releases a command at once. */
TOKA_API void TOKACommandOnce(TOKACommandRef command);

/* Registers a handler of the calling plugin for a command: before (non-zero)
 * the simulator's own handling, or after it. Before-handlers run newest
 * first, after-handlers oldest first. Registering the same handler and
 * refcon twice makes it run twice. Handlers go when the plugin is unloaded. */
TOKA_API void TOKARegisterCommandHandler(TOKACommandRef command, TOKACommandCallback_f handler,
                                         int before, void* refcon);

/* Removes one registration of the calling plugin made with the same command,
 * handler, before flag and refcon; nothing happens if there is none. */
TOKA_API void TOKAUnregisterCommandHandler(TOKACommandRef command,
                                           TOKACommandCallback_f handler, int before,
                                           void* refcon);

/* Older interface: passes a key command code to the simulator. */
TOKA_API void TOKACommandKeyStroke(int keyCommand);

/* Older interface: presses a simulator button, which then repeats on every
 * processing pass until released. Button code 0 cannot be used. Buttons
 * belong to no plugin and stay pressed when a plugin is unloaded. */
TOKA_API void TOKACommandButtonPress(int button);

/* Releases one press of a button (a code never pressed is still passed to
 * the simulator). */
TOKA_API void TOKACommandButtonRelease(int button);

TOKA_END_DECLS

#endif
