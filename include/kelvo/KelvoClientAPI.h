/* Connections: connect, disconnect, time-out, command log, recording, last error. Conventions: kelvo.h. */
#ifndef KELVO_CLIENT_API_H
#define KELVO_CLIENT_API_H

#include "kelvo/KelvoTypes.h"

KELVO_EXTERN_C_BEGIN

/* The TCP port on which a card listens. */
#define KELVO_DEFAULT_PORT 49374

/* Connects to the card at `host` (an IPv4 or IPv6 address, or a name for the system's resolver, of whose answers the
 * first IPv4 or IPv6 one is taken) and TCP port `port` (1 to 65535), tells it the library's version and reads its
 * firmware version and serial number. A link-local IPv6 address carries its interface, as in "fe80::1%eth0".
 * Returns the new handle (1 or more), or -1:
 *   - "Invalid IP address or unable to resolve host name with DNS."
 *   - "Port must be between 1 and 65535."
 *   - "Error: Cannot open connection to ADDRESS/PORT.": refused, unreachable, or no answer within 17000 ms
 *   - "Maximum number of handles created. Disconnect has to be called to remove previous connections."
 *   - what the first calls to the card can fail with (kelvo.h, 5)
 * A failed connect uses up a handle number; a name that cannot be resolved does not. Remote. Works inside a callback,
 * too: it makes a connection of its own. */
KELVO_API int32_t vlConnect(const char* host, int32_t port);

/* Ends the connection `handle`: running calls and waits on it return with "ConnectionAborted", its lists are
 * released, its receive thread is joined. A connect that is still under way for the handle fails. Prompt in every
 * state, unless one of the application's own callbacks is still running: calls and waits return at once then, too,
 * and it waits for the callback to return. Returns 0, or -1: a bad handle (kelvo.h, 3); "A callback must not
 * disconnect."; in a process that did not make the connection (a child of fork) "The connection belongs to another
 * process.", and the connection is not touched. Local. Not inside a callback. */
KELVO_API int32_t vlDisconnect(int32_t handle);

/* Writes to `*connected` whether the connection `handle` is up. A handle that is not in use, a negative one
 * too, is not an error: false is written. Returns 0, or -1 only for a null pointer. Local. */
KELVO_API int32_t vlIsConnected(int32_t handle, bool* connected);

/* Writes the connection's time-out in milliseconds to `*timeout_ms`. Returns 0 or -1 (kelvo.h, 3). Local. */
KELVO_API int32_t vlGetTimeout(int32_t handle, uint32_t* timeout_ms);

/* Sets how long later calls and waits on this connection wait, in milliseconds. 0 waits for nothing: the answer must
 * already be there. Calls that are waiting keep theirs. A card that is busy, so that it reads nothing, is left that
 * time, too, and never less than 30 s, before the connection is taken for dead. Returns 0 or -1 (kelvo.h, 3). Local. */
KELVO_API int32_t vlSetTimeout(int32_t handle, uint32_t timeout_ms);

/* Writes every later call on this connection and its answer, and every notification, to the text file `path` (if
 * `path` is a directory, to the file "KELVOrpc" in it), starting a new file. A log that is already being written is
 * ended first. A value longer than `max_value_length` characters is cut there and followed by "...[truncated]"; a
 * negative length means no limit. Lines begin with the local time, to the millisecond, and the id of the thread in
 * the kernel; the first two are "Logging enabled" and the versions of library, firmware and card. Each is one line,
 * whatever a card has sent: behind the thread's id a backslash is written as "\\", a line feed as "\n", a carriage
 * return as "\r", a tab as "\t", and each byte of any other control character and of U+2028 and U+2029 as "\x" and
 * two hexadecimal digits. The log never makes a call fail or wait for a reader: a line that cannot be written is
 * missing, which the next one that can says ("2 lines are missing here") and vlDisableCommandLogging reports. Returns
 * 0, or -1, and no log is written: "Connection must be enabled to start logging!" when the connection is down;
 * "Unable to open log file 'PATH': REASON", also for a pipe that nobody reads; "Unable to write log file 'PATH':
 * REASON" when not even its first line can be written, on a full disk for one, or when lines of the earlier log, then
 * the one at PATH, are missing. Local. */
KELVO_API int32_t vlEnableCommandLogging(int32_t handle, const char* path, int32_t max_value_length);

/* Ends the command log; without one it does nothing. Returns 0 or -1: a bad handle (kelvo.h, 3), or "Unable to write
 * log file 'PATH': REASON" when lines of it are missing, with the reason of the last one; it is ended all the same.
 * vlDisconnect ends it, too, and says nothing of it. Local. */
KELVO_API int32_t vlDisableCommandLogging(int32_t handle);

/* Records every later call on this connection, its answer, and every notification into the file `path`, starting a new
 * file: a line of JSON each, with the time (docs/session.md). A recording that is already being written is ended first.
 * What files contain is recorded, too, when they are transferred. A thread of its own writes; calls and callbacks wait
 * for it only when the disk is far behind, and at most a second, after which frames are missing, which the recording
 * and vlDisableRecording tell. Returns 0, or -1, and nothing is recorded: a bad handle (kelvo.h, 3); "Connection must be
 * enabled to start recording!" when the connection is down; "Unable to open recording 'PATH': REASON"; "Unable to write
 * recording 'PATH': REASON", also for the earlier one; or "N frames are missing in recording 'PATH'." of that. Local. */
KELVO_API int32_t vlEnableRecording(int32_t handle, const char* path);

/* Ends the recording and returns when all of it is in the file; without one it does nothing. Returns 0 or -1: a bad
 * handle (kelvo.h, 3); "Unable to write recording 'PATH': REASON" when the disk was full, for one, and the file ends
 * there; or "N frames are missing in recording 'PATH'."; it is ended all the same. vlDisconnect ends it, too, and says
 * nothing of it. Local. */
KELVO_API int32_t vlDisableRecording(int32_t handle);

/* Calls any method of the card by its name, for what has no function of its own; the card's manual names such
 * methods. `arguments` is a JSON array of them. The answer's JSON goes with a terminating zero into `buffer` of
 * `size` bytes, and its length without the zero to `*length`. What JSON lacks is an object with one key, in arguments
 * and answers alike: {"base64": "AQI="} for binary, {"number": "nan"}, "inf" or "-inf", {"map": [[key, value], ...]}
 * for maps whose keys are not all texts or that would look like one of these, {"text": "..."} in base64 for texts
 * that are no UTF-8, {"extension": [type, "..."]} in base64. A number with a fraction or an exponent is a double, any
 * other an integer; so 1.0 stands for a double that is whole. Returns 0, or -1: "The arguments are no JSON array.";
 * "The arguments are nested too deeply." (more than 256 levels); "An object has the key 'KEY' twice."; a text that says
 * which of these objects is none; "Buffer is too small." unless `size` is at least the length plus 2, when the card has
 * carried out the call all the same; or kelvo.h, 5. Remote. */
KELVO_API int32_t vlCallJson(int32_t handle, const char* method, const char* arguments, char* buffer,
                             uint32_t size, uint32_t* length);

/* Returns the length of the calling thread's last error plus 2: a buffer of that size has room for the text
 * and its terminating zero. Without an error 2. Does not clear the error. Local. */
KELVO_API int32_t vlGetLastErrorLen(void);

/* Copies the calling thread's last error with its terminating zero into `buffer` of `size` bytes and clears
 * it, so that a second call gives an empty text. If the text does not fit, `buffer` receives "Error buffer
 * too small" when `size` is above 22, else an empty text, and the error is cleared too. A null `buffer` or a
 * `size` of 0 or less does nothing and keeps the error. Local. */
KELVO_API void vlGetLastError(char* buffer, int32_t size);

KELVO_EXTERN_C_END

#endif
