/* Command lists: make them, upload them to the card, run them and follow their progress. The commands that
 * they are built of are in KelvoListAppendAPI.h. Conventions: kelvo.h.
 *
 * A list lives in the application's memory under a list handle (int64_t) and on the card under a list id
 * (int32_t) that the application chooses. Functions that build a list are local and take the list handle;
 * functions that act on the card take the connection handle and the list id.
 */
#ifndef KELVO_LIST_API_H
#define KELVO_LIST_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* ---- Lists and their handles ---- */

/* Makes an empty list on the connection `handle`. Returns its list handle, or -1 (kelvo.h, 3;
 * "List handle already occupied."). Local. */
KELVO_API int64_t vlListAllocate(int32_t handle);

/* Makes a list from its text (docs/list-text.md has the form): what vlListToString writes, or what is written by
 * hand. Returns its list handle, or -1 (kelvo.h, 3; "Illegal list content!" for a text that is no list; "Command
 * exceeds the maximum allowed command size of 921600 . Please split into several commands." for one with such a
 * command; "List handle already occupied."). Local. */
KELVO_API int64_t vlListAllocateFromString(int32_t handle, const char* text);

/* Releases the list. Safe while another thread appends to it or uploads it. Returns 0 whether or not the list
 * existed, or -1 when its connection does not exist (kelvo.h, 3). Local. */
KELVO_API int32_t vlListReleaseHandle(int64_t list);

/* Releases the list like vlListReleaseHandle, but a list that does not exist fails with "List does not
 * exist.". Returns 0 or -1. Local. */
KELVO_API int32_t vlListDeleteHandle(int64_t list);

/* Removes every command and label from the list. Loops that are open stay open. Returns 0 or -1. Local. */
KELVO_API int32_t vlListClear(int64_t list);

/* Returns the number of commands in the list, or -1. Local. */
KELVO_API int32_t vlListCommandCount(int64_t list);

/* Appends all commands of the list `other`, which may be the same list or one of another connection. Its labels
 * and open loops stay where they are. Returns 0 or -1. Local. */
KELVO_API int32_t vlListAppendList(int64_t list, int64_t other);

/* Appends one command in text form (docs/list-text.md), "{ MA, P2D[ X=1 Y=2 ] }". Loops in text do not change how many
 * are open. Returns 0, or -1: "Unable to parse command", "Unable to parse command code" (an unknown mnemonic),
 * "Unable to parse Point." (too few numbers), or another text that says what cannot be read. Local. */
KELVO_API int32_t vlListAppendCommandFromString(int64_t list, const char* text);

/* Returns the length of the list's text without a terminating zero, or -1. Local. */
KELVO_API int64_t vlListStringLen(int64_t list);

/* Writes the list's text, as vlListAllocateFromString reads it, with a terminating zero into `buffer` of `size`
 * bytes, and its length without the zero to `*length`. Returns 0, or -1 with "Buffer is too small." unless `size`
 * is at least the length plus 2 (deliberately one byte more than the text and its zero). Local. */
KELVO_API int32_t vlListToString(int64_t list, char* buffer, uint32_t size, uint32_t* length);

/* ---- Lists on the card ---- */

/* Uploads the list as the card's list `list_id`, in as many pieces as it needs; with `append` behind what the
 * card has under that id, else in its place. `list_field` is a number the card receives ahead of the
 * commands; -1 where the card's manual asks for none. `list` must be one of the same connection. What
 * is uploaded is the list as it is at the time of
 * the call; other threads may go on changing it. Resolves the list's labels. Returns 0, or -1: "Label 'NAME' not defined
 * (referenced from 'CODE' at INDEX).", "There are open loops inside the list!" or "Command INDEX is too large to be
 * uploaded.", and nothing is sent; or kelvo.h, 5. After a failure in the middle the card may hold the first part of the
 * list. Remote. */
KELVO_API int32_t vlListSet(int32_t handle, int32_t list_id, int64_t list, bool append, int32_t list_field);

/* Fetches the card's list `list_id` and puts it in place of the content of `list`, one of the same connection, labels
 * included: a fetched list has none. Returns 0 or -1; on failure the list is as it was. Remote. */
KELVO_API int32_t vlListGet(int32_t handle, int32_t list_id, int64_t list);

/* Makes the list `list_id` that the card has stored one that it can run. Returns 0 or -1. Remote. */
KELVO_API int32_t vlListLoad(int32_t handle, int32_t list_id);

/* Makes the card store its list `list_id` for good. Returns 0 or -1. Remote. */
KELVO_API int32_t vlListStore(int32_t handle, int32_t list_id);

/* Deletes the card's list `list_id`; what `flag` means is the card's business (the virtual card: also delete
 * what it stored of it). Returns 0 or -1. Remote. */
KELVO_API int32_t vlListDelete(int32_t handle, int32_t list_id, bool flag);

/* Writes the ids of the lists that the card holds to `ids`, an array of `capacity` elements, and their number
 * to `*count`. More ids than `capacity` fail with "Buffer is too small."; `*count` is then written all the same, nothing
 * else. So a `capacity` of 0, for which `ids` may be null, asks for the number. Returns 0 or -1. Remote. */
KELVO_API int32_t vlListGetStoredListIDs(int32_t handle, int32_t* ids, uint32_t capacity, uint32_t* count);

/* Starts the card's list `list_id` and returns without waiting for its end: 0, or -1. Remote. */
KELVO_API int32_t vlListExecute(int32_t handle, int32_t list_id);

/* Ends the running list; without one it does nothing. Returns 0 or -1. Remote. */
KELVO_API int32_t vlListAbortExecution(int32_t handle);

/* Ends the running list and puts execution back to its beginning (the virtual card: variables, counters and signals,
 * too). Returns 0 or -1. Remote. */
KELVO_API int32_t vlListResetExecution(int32_t handle);

/* Writes whether a list is running to `*in_progress`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlListIsExecutionInProgress(int32_t handle, bool* in_progress);

/* The status of a list, as the virtual card tells it. Other cards may have other values, which are passed on. */
typedef enum vlListStatus {
  vlListStatus_NoSuchList = 0, /* the card has no list under that id, or stored only */
  vlListStatus_Ready = 1,      /* it can be run */
  vlListStatus_Running = 2,    /* it is running, or called by one that is */
} vlListStatus;

/* Writes the status of the card's list `list_id` (vlListStatus) to `*status`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlListGetListStatus(int32_t handle, int32_t list_id, int32_t* status);

/* Writes where the card is in its list `list_id` to `*caret` (the virtual card: the index of the command that is
 * running, -1 when the list is not). Returns 0 or -1. Remote. */
KELVO_API int32_t vlListGetListCaret(int32_t handle, int32_t list_id, int32_t* caret);

/* Limits how long a list may run (the virtual card: in milliseconds of its own time, 0 for no limit). Returns 0 or
 * -1. Remote. */
KELVO_API int32_t vlListSetExecutionLimit(int32_t handle, int32_t limit);

/* Writes the execution limit to `*limit`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlListGetExecutionLimit(int32_t handle, int32_t* limit);

/* Statistics of the latest execution. Times are the card's own (the virtual card: microseconds). */
typedef struct vlListExecutionStats {
  int32_t MacroVectors;                 /* vectors as the list gave them: jumps and marks */
  int32_t MicroVectors;                 /* vectors as the galvos were driven */
  double ComputationTime;               /* time the card spent computing */
  double ExecutionTime;                 /* time the run took */
  double ComputationTimePerMicroVector; /* ComputationTime / MicroVectors */
} vlListExecutionStats;
KELVO_STATIC_ASSERT(sizeof(vlListExecutionStats) == 32, "the layout is part of the interface");

/* Writes the statistics of the latest execution to `*stats`. Returns 0 or -1. Remote. */
KELVO_API int32_t vlListGetLastExecutionStats(int32_t handle, vlListExecutionStats* stats);

/* ---- Following a run: progress, list done (value: list id), list idle (value: list id) ----
 *
 * Values that arrive are kept, in order and one queue a kind, until a wait takes them or
 * vlListClearPendingEvents discards them; of more than 1048576 waiting values the oldest go first. Callbacks
 * receive every value as well. */

/* As `timeout_ms` of a wait: the connection's time-out. Any negative number means the same. */
#define KELVO_CONNECTION_TIMEOUT (-1)

/* Waits until a progress value is there, takes the oldest and writes it to `*value`. `timeout_ms` is in milliseconds
 * (0 only looks, negative: the connection's time-out). Waits for the connection, never for an answer. Returns
 *   -  0: a value was taken
 *   -  1: none came in time, or the wait was interrupted; `*value` is untouched and there is no last error
 *   - -1: a bad handle; "Connection not active!" or "ConnectionAborted", at once, when the connection is down and no
 *         value is left; "A callback must not wait for its own connection." */
KELVO_API int32_t vlListWaitForProgress(int32_t handle, int32_t* value, int32_t timeout_ms);
/* The same for the list done events: `*list_id` is the list that ended. */
KELVO_API int32_t vlListWaitForListDone(int32_t handle, int32_t* list_id, int32_t timeout_ms);
/* The same for the list idle events: `*list_id` is the list after which the card went idle. */
KELVO_API int32_t vlListWaitForListIdle(int32_t handle, int32_t* list_id, int32_t timeout_ms);

/* Makes the progress waits that are running return 1. A wait that starts later is not affected. Returns 0 or
 * -1 (kelvo.h, 3). Local. */
KELVO_API int32_t vlListInterruptWaitForProgress(int32_t handle);
/* The same for list done waits. */
KELVO_API int32_t vlListInterruptWaitForListDone(int32_t handle);
/* The same for list idle waits. */
KELVO_API int32_t vlListInterruptWaitForListIdle(int32_t handle);

/* Receives the connection's handle and an event's value (progress value or list id). */
typedef void (*vlListEventCallback)(int32_t handle, int32_t value);
/* The kinds of notifications. */
typedef enum vlRpcEventType {
  vlRpcEventType_None = 0,        /* none */
  vlRpcEventType_ListIdle = 0x01, /* the card is idle after a list */
  vlRpcEventType_ListDone = 0x02, /* a list has ended */
  vlRpcEventType_Progress = 0x11, /* a progress value */
  vlRpcEventType_Unknown = -1,    /* an error that comes without a kind: what error callbacks get */
  vlRpcEventType_ListError = -3,  /* an error in a list */
  vlRpcEventType_Error = -4,      /* an error of the card */
  vlRpcEventType_Exception = -5,  /* a fault in the card */
} vlRpcEventType;

/* Receives the connection's handle, the kind of the notification (vlRpcEventType), and the error's text of `length`
 * characters and a terminating zero, which lives only during the call. */
typedef void (*vlErrorEventCallback)(int32_t handle, int32_t code, const char* message, uint32_t length);

/* Registers a callback for progress values and writes its id (2 to 6) to `*callback_id`. At most five
 * callbacks of a kind: the next registration fails with "Unable to register callback!". Deliberate oddity:
 * that sixth callback stays registered under id 7 and is called all the same until id 7 is unregistered.
 * Returns 0 or -1. Local. */
KELVO_API int32_t vlListRegisterProgressCallback(int32_t handle, vlListEventCallback callback,
                                                 uint32_t* callback_id);
/* The same for list done events. */
KELVO_API int32_t vlListRegisterListDoneCallback(int32_t handle, vlListEventCallback callback,
                                                 uint32_t* callback_id);
/* The same for list idle events. */
KELVO_API int32_t vlListRegisterListIdleCallback(int32_t handle, vlListEventCallback callback,
                                                 uint32_t* callback_id);
/* The same for errors that the card reports outside of any call. */
KELVO_API int32_t vlListRegisterErrorEventCallback(int32_t handle, vlErrorEventCallback callback,
                                                   uint32_t* callback_id);

/* Unregisters the progress callback `callback_id`; an id that is not registered is no error. Waits for the callback if
 * it is running, except from inside it (kelvo.h, 7), and not for anything else. Returns 0, or -1: a bad handle (kelvo.h,
 * 3); from inside a callback of another connection also "A callback must not wait for a connection whose callback waits
 * for its own.": then it is unregistered all the same, but may still be running. Local. */
KELVO_API int32_t vlListUnRegisterProgressCallback(int32_t handle, uint32_t callback_id);
/* The same for list done events. */
KELVO_API int32_t vlListUnRegisterListDoneCallback(int32_t handle, uint32_t callback_id);
/* The same for list idle events. */
KELVO_API int32_t vlListUnRegisterListIdleCallback(int32_t handle, uint32_t callback_id);
/* The same for error events. */
KELVO_API int32_t vlListUnRegisterErrorEventCallback(int32_t handle, uint32_t callback_id);

/* Discards every pending progress, list done and list idle value and the stored error event. If received data
 * is still waiting to be read, lets the receive thread run first. Returns 0 or -1 (kelvo.h, 3). Local. */
KELVO_API int32_t vlListClearPendingEvents(int32_t handle);

KELVO_EXTERN_C_END

#endif
