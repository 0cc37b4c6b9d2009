/* Marks a nameplate: connects to a card, builds the list, uploads it, runs it and follows the run to its end.
 *
 * Exit status: 0 marked; 1 a call failed or the job did not end as it should; 2 wrong usage; 128 + the
 * signal's number when the job was stopped by Ctrl-C (130) or SIGTERM (143). */
#define _POSIX_C_SOURCE 200809L /* sigaction, clock_gettime */

#include <inttypes.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "call.h"
#include "card_address.h"
#include "kelvo/kelvo.h"
#include "nameplate.h"
#include "progress_bar.h"

enum {
  kListId = 1,
  kNoListField = -1,
  kWaitMs = 100,         /* a single wait: how late a stop request may be noticed */
  kJobTimeoutMs = 60000, /* the whole job, which takes a few seconds */
  kLogValueLength = 400  /* a longer value is cut in the command log: an upload is long */
};

/* ---- Command line ---- */

typedef struct Options {
  const char* serial;
  const char* logFile;
  CardAddress card;
} Options;

static _Noreturn void ExitWithUsage(void) {
  fprintf(stderr,
          "usage: mark_nameplate [--serial TEXT] [--log FILE] [HOST [PORT]]\n"
          "  --serial TEXT  the serial number, up to 18 characters of ASCII (default 00012345)\n"
          "  --log FILE     write all calls to the card and its answers to FILE\n"
          "  HOST, PORT     the card (default 127.0.0.1 and %d)\n",
          KELVO_DEFAULT_PORT);
  exit(2);
}

static Options ParseOptions(int count, char** arguments) {
  Options options = {.serial = "00012345", .logFile = NULL};
  int i = 1;
  for (; i < count && arguments[i][0] == '-'; i += 2) {
    if (i + 1 == count) ExitWithUsage();
    if (strcmp(arguments[i], "--serial") == 0) {
      options.serial = arguments[i + 1];
    } else if (strcmp(arguments[i], "--log") == 0) {
      options.logFile = arguments[i + 1];
    } else {
      ExitWithUsage();
    }
  }
  if (!ParseCardAddress(count - i, arguments + i, &options.card)) ExitWithUsage();
  if (!IsMarkableSerial(options.serial)) ExitWithUsage();
  return options;
}

/* ---- Stop requests ---- */

static volatile sig_atomic_t stopSignal = 0;

static void RequestStop(int signalNumber) {
  stopSignal = signalNumber;
}

/* Makes Ctrl-C and SIGTERM a request to stop the job: if they simply ended the program, the card would go on
 * marking. A second one does end it, should the card no longer answer. */
static void CatchStopSignals(void) {
  struct sigaction action = {.sa_handler = RequestStop, .sa_flags = SA_RESTART | (int)SA_RESETHAND};
  sigaction(SIGINT, &action, NULL);
  sigaction(SIGTERM, &action, NULL);
}

/* ---- The job ---- */

typedef enum JobEnd { kJobComplete, kJobEndedEarly, kJobStopped, kJobTimedOut } JobEnd;

static int32_t Connect(const Options* options) {
  const int32_t handle = (int32_t)CALL(vlConnect, options->card.host, options->card.port);
  if (options->logFile != NULL) CALL(vlEnableCommandLogging, handle, options->logFile, kLogValueLength);
  return handle;
}

static void Upload(int32_t handle, const char* serial) {
  const int64_t list = CALL(vlListAllocate, handle);
  AppendNameplate(list, serial);
  CALL(vlListSet, handle, kListId, list, false, kNoListField);
  printf("list %d: %" PRId64 " commands\n", kListId, CALL(vlListCommandCount, list));
  CALL(vlListReleaseHandle, list); /* the card has its own copy now */
}

static int64_t NowMs(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (int64_t)now.tv_sec * 1000 + now.tv_nsec / 1000000;
}

/* Whether a wait has taken an event. A failed one, as when the connection is lost, ends the program. */
static bool EventTaken(ProgressBar* bar, const char* waitName, int32_t waitResult) {
  if (waitResult < 0) EndProgressBar(bar);
  return CheckCall(waitName, waitResult) == 0;
}

/* Takes the next progress value and shows it. */
static bool TakeProgress(int32_t handle, ProgressBar* bar, int32_t timeoutMs) {
  int32_t percent = 0;
  const int32_t result = vlListWaitForProgress(handle, &percent, timeoutMs);
  if (!EventTaken(bar, "vlListWaitForProgress", result)) return false;
  ShowProgress(bar, percent);
  return true;
}

/* Takes the event that the job's list is done. The progress that the card sent before it is here by then. */
static bool TakeListDone(int32_t handle, ProgressBar* bar, int32_t timeoutMs) {
  int32_t doneList = 0;
  const int32_t result = vlListWaitForListDone(handle, &doneList, timeoutMs);
  if (!EventTaken(bar, "vlListWaitForListDone", result) || doneList != kListId) return false;
  while (TakeProgress(handle, bar, 0)) continue;
  return true;
}

/* Whether the card has gone idle after the job's list. */
static bool TakeListIdle(int32_t handle, ProgressBar* bar) {
  int32_t idleList = 0;
  const int32_t result = vlListWaitForListIdle(handle, &idleList, 0);
  return EventTaken(bar, "vlListWaitForListIdle", result) && idleList == kListId;
}

/* Waits for progress while there is some to come, then for the end of the list. Looks for the end before that
 * too: the list may be aborted by somebody else, or run into an error; the card is idle then without the list
 * being done. */
static JobEnd FollowJob(int32_t handle, ProgressBar* bar) {
  const int64_t deadline = NowMs() + kJobTimeoutMs;
  while (NowMs() < deadline) {
    if (stopSignal != 0) return kJobStopped;
    const bool allShown = bar->shown >= 100;
    if (!allShown) TakeProgress(handle, bar, kWaitMs);
    const bool isIdle = TakeListIdle(handle, bar); /* comes after list done, so it is looked for before */
    if (TakeListDone(handle, bar, allShown && !isIdle ? kWaitMs : 0)) {
      return bar->shown >= 100 ? kJobComplete : kJobEndedEarly;
    }
    if (isIdle) return kJobEndedEarly;
  }
  return kJobTimedOut;
}

/* Shows what goes wrong on the card while the list runs. Called on the connection's receive thread. */
static void ShowError(int32_t handle, int32_t code, const char* message, uint32_t length) {
  (void)handle;
  (void)code;
  fprintf(stderr, "\nThe card reports:\n%.*s\n", (int)length, message);
}

static JobEnd RunJob(int32_t handle) {
  ProgressBar bar = NewProgressBar();
  uint32_t callbackId = 0;
  CALL(vlListRegisterErrorEventCallback, handle, ShowError, &callbackId);
  CatchStopSignals();
  CALL(vlListClearPendingEvents, handle); /* events of an earlier run are not ours */
  CALL(vlListExecute, handle, kListId);
  const JobEnd end = FollowJob(handle, &bar);
  EndProgressBar(&bar);
  if (end == kJobStopped || end == kJobTimedOut) CALL(vlListAbortExecution, handle);
  return end;
}

/* ---- What came of it ---- */

static void PrintStatistics(int32_t handle) {
  vlListExecutionStats stats;
  CALL(vlListGetLastExecutionStats, handle, &stats);
  printf("statistics of the run (times as the card gives them)\n");
  printf("  macro vectors         %12" PRId32 "\n", stats.MacroVectors);
  printf("  micro vectors         %12" PRId32 "\n", stats.MicroVectors);
  printf("  execution time        %16.3f\n", stats.ExecutionTime);
  printf("  computation time      %16.3f\n", stats.ComputationTime);
  printf("  ... per micro vector  %16.3f\n", stats.ComputationTimePerMicroVector);
}

static int Conclude(int32_t handle, JobEnd end) {
  switch (end) {
    case kJobComplete:
      PrintStatistics(handle);
      return EXIT_SUCCESS;
    case kJobStopped:
      fprintf(stderr, "Stopped: the execution was aborted.\n");
      return 128 + stopSignal;
    case kJobTimedOut:
      fprintf(stderr, "The job did not end within %d s: the execution was aborted.\n", kJobTimeoutMs / 1000);
      return EXIT_FAILURE;
    case kJobEndedEarly:
      fprintf(stderr, "The list was ended before it was complete.\n");
      return EXIT_FAILURE;
  }
  return EXIT_FAILURE;
}

int main(int argc, char** argv) {
  const Options options = ParseOptions(argc, argv);
  const int32_t handle = Connect(&options);
  Upload(handle, options.serial);
  const JobEnd end = RunJob(handle);
  const int status = Conclude(handle, end);
  CALL(vlDisconnect, handle);
  return status;
}
