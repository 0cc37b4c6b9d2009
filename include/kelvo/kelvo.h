/* Client library of the KELVO family of laser-scanner controller cards: everything in one include.
 *
 * Conventions that every function follows:
 *
 *  1. Result. A function returns 0 on success and -1 on failure. A function that returns a handle, a count or
 *     a length returns that instead of 0, and -1 on failure all the same. No function throws.
 *  2. Last error. A failure leaves its text as the calling thread's last error (vlGetLastError). Every function
 *     but vlGetLastError and vlGetLastErrorLen clears it on entry, so it always belongs to the latest call. An
 *     exception that is no standard exception is recorded as "Unexpected error!".
 *  3. Connection handles are 1 or more and name one connection to one card. They rise and are not used again
 *     before the counter has come round. A negative one fails with "Illegal handle.", one that is not in use
 *     with "There is no connection corresponding to this handle.".
 *  4. List handles hold their connection's handle in the upper 32 bits and live until they are released or the
 *     connection is disconnected. Functions that take one fail as in 3, or with "List does not exist.". Font
 *     handles are alike: "Font does not exist.".
 *  5. A function marked "Remote." talks to the card and waits for its answer, up to the connection's time-out
 *     (17000 ms unless vlSetTimeout changed it). It can fail with
 *       - "Connection not active!": the connection is down, or was never up
 *       - "ConnectionAborted": it went down during the call, or vlDisconnect ran
 *       - "Response was not received in the given timespan.": the card did not answer in time
 *       - "Socket error, unable to send!": the request could not be sent in time, or at all
 *       - "std::bad_cast": the answer is not of the promised kind
 *       - "Invalid packet!" and a reason: the answer is malformed, or holds more than 1048576 values and is neither a
 *         list nor a font
 *       - a text between lines of dashes: the card refused; its own words stand inside, a zero byte in them as "\0"
 *     A function marked "Local." does none of that and never waits for the card.
 *  6. Threads. Any function may be called from any thread at any time, also on one connection at once. A call
 *     that races with vlDisconnect on its connection returns with its result or with one of the texts above.
 *  7. Callbacks run on the connection's own receive thread. Inside one, every local function works, and so do
 *     remote functions on *other* connections. A remote function or a wait on the same connection fails at once
 *     with "A callback must not wait for its own connection.", one on a connection whose callback waits, directly or by
 *     way of others, for the first with "A callback must not wait for a connection whose callback waits for its own.",
 *     and vlDisconnect of any connection with "A callback must not disconnect.". A callback that blocks keeps its
 *     connection from receiving. An exception that leaves a callback ends its connection.
 *     Unregistering: when the call has returned, the callback neither runs nor begins; one that is running is waited
 *     for. So do not unregister while holding a lock that the callback takes. Inside callbacks of the same connection
 *     nothing needs to be waited for, and one that is unregistered there, itself or another, does not begin any more.
 *  8. Pointers. Texts are zero-terminated. A null pointer where one is not allowed fails with
 *     "A null pointer was passed for 'NAME'.". Outputs are written on success only. One exception: when an array is too
 *     small for what the card sends, some functions say that they write the number of elements that it must have.
 *  9. Units are the card's own: coordinates in field units, speeds in field units per microsecond, delays and
 *     durations in microseconds, unless a function says otherwise. Time-outs are in milliseconds.
 * 10. Processes. Connections do not survive fork: use them in the process that made them only. A child of fork that
 *     calls vlDisconnect, vlEnableRecording or vlDisableRecording gets "The connection belongs to another process."; it
 *     may exit. A process may exit with connections open, also from a callback; they are ended in order. The library
 *     changes nothing process-wide: no signal handling, no locale. What makes it close a connection unasked, a card that
 *     sends nonsense or a callback that throws, is said in one line on standard output, if that takes it at once.
 * 11. Threads are not to be ended inside the library: no pthread_cancel of a thread that is in a call, no pthread_exit
 *     and no cancellation in a callback. Either ends the process.
 * 12. Enumerations. The constants of an enumeration vlNAME are vlNAME_CONSTANT, as in vlPowerTarget_Dac0. Fields and
 *     parameters that take them are integers, so their width is fixed and a card may send numbers that are none. Flags
 *     are combined with |.
 */
#ifndef KELVO_H
#define KELVO_H

#include "kelvo/KelvoAdapterBoardAPI.h"
#include "kelvo/KelvoClientAPI.h"
#include "kelvo/KelvoConfigurationAPI.h"
#include "kelvo/KelvoDiscoveryAPI.h"
#include "kelvo/KelvoEventAPI.h"
#include "kelvo/KelvoFileAPI.h"
#include "kelvo/KelvoFontAPI.h"
#include "kelvo/KelvoGpioAPI.h"
#include "kelvo/KelvoHeadCorrectionAPI.h"
#include "kelvo/KelvoInternalAPI.h"
#include "kelvo/KelvoLaserAPI.h"
#include "kelvo/KelvoListAPI.h"
#include "kelvo/KelvoListAppendAPI.h"
#include "kelvo/KelvoMotfAPI.h"
#include "kelvo/KelvoPowerCorrectionAPI.h"
#include "kelvo/KelvoProcessAPI.h"
#include "kelvo/KelvoScannerAPI.h"
#include "kelvo/KelvoSerialPortAPI.h"
#include "kelvo/KelvoSfioAPI.h"
#include "kelvo/KelvoSpiAPI.h"
#include "kelvo/KelvoSystemAPI.h"
#include "kelvo/KelvoVariableAPI.h"

#endif
