/* A whole job in plain C against the virtual card, and the ways in which a program may end with a connection
 * open.
 *
 * usage: c_job_test CARD MODE, with CARD the virtual card's program and MODE
 *   job         runs a list and checks what comes back
 *   return      returns from main with connections open and a callback registered
 *   callback    exits from inside a callback
 *   stuck       exits while a callback never returns
 *   kill        the card dies in the middle of a list
 *   idle        1000 idle connections at once
 *   cycle       1000 connections one after the other leave nothing behind
 * Exit status 0 if all is as it should be. */
#include <dirent.h>
#include <signal.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include "kelvo/kelvo.h"

/* Sanitizers keep memory of their own. */
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define SANITIZED 1
#else
#define SANITIZED 0
#endif

static pid_t cardProcess = -1;

static void EndCard(void) {
  if (cardProcess <= 0) return;
  kill(cardProcess, SIGKILL);
  waitpid(cardProcess, NULL, 0);
  cardProcess = -1;
}

static void Fail(const char* what) {
  char text[1000];
  vlGetLastError(text, (int)sizeof text);
  fprintf(stderr, "%s: %s\n", what, text);
  EndCard();
  _exit(1);
}

#define CHECK(condition)                \
  do {                                  \
    if (!(condition)) Fail(#condition); \
  } while (0)

/* Starts a card and returns its port. */
static int StartCard(const char* program, const char* speed) {
  int ends[2];
  CHECK(pipe(ends) == 0);
  cardProcess = fork();
  if (cardProcess == 0) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    dup2(ends[1], STDOUT_FILENO);
    execl(program, program, "--port", "0", "--speed", speed, "--connections", "1100", (char*)NULL);
    _exit(127);
  }
  close(ends[1]);
  FILE* output = fdopen(ends[0], "r");
  int port = 0;
  CHECK(output != NULL && fscanf(output, "Listening on 127.0.0.1:%d", &port) == 1);
  fclose(output);
  return port;
}

static int progressSeen = 0;

static void CountProgress(int32_t handle, int32_t value) {
  (void)handle;
  progressSeen += value;
}

static void ExitNow(int32_t handle, int32_t value) {
  (void)handle;
  (void)value;
  exit(0); /* with a card that is alive, which ends when this process has */
}

static atomic_bool isStuck = false;

static void NeverReturn(int32_t handle, int32_t value) {
  (void)handle;
  (void)value;
  isStuck = true;
  for (;;) pause();
}

/* Two lines, and a loop that runs `rounds` times: 1000 us a round. */
static int64_t MakeList(int32_t handle, int32_t rounds) {
  const int64_t list = vlListAllocate(handle);
  CHECK(list > 0);
  CHECK(vlListAppendJumpSpeed(list, 0.02) == 0);
  CHECK(vlListAppendMarkSpeed(list, 0.01) == 0);
  CHECK(vlListAppendJumpAbs2D(list, 10, 0) == 0);
  CHECK(vlListAppendMarkAbs2D(list, 20, 0) == 0);
  CHECK(vlListAppendProgress(list, 7) == 0);
  CHECK(vlListAppendLoopStart(list, rounds) == 0);
  CHECK(vlListAppendSleep(list, 1000) == 0);
  CHECK(vlListAppendLoopEnd(list) == 0);
  CHECK(vlListAppendMarkRel2D(list, 0, 10) == 0);
  return list;
}

static void Job(int32_t handle) {
  int32_t value = 0;
  int32_t ids[4] = {0};
  uint32_t count = 0;
  uint32_t callback = 0;
  vlListExecutionStats stats;
  const int64_t list = MakeList(handle, 5);
  const int64_t copy = vlListAllocate(handle);
  CHECK(vlListRegisterProgressCallback(handle, CountProgress, &callback) == 0);
  CHECK(vlListSet(handle, 3, list, false, -1) == 0);
  CHECK(vlListGet(handle, 3, copy) == 0);
  CHECK(vlListCommandCount(copy) == vlListCommandCount(list));
  CHECK(vlListGetStoredListIDs(handle, ids, 4, &count) == 0);
  CHECK(count == 1 && ids[0] == 3);
  CHECK(vlListGetListStatus(handle, 3, &value) == 0 && value == vlListStatus_Ready);
  CHECK(vlListExecute(handle, 3) == 0);
  CHECK(vlListWaitForProgress(handle, &value, 5000) == 0 && value == 7);
  CHECK(vlListWaitForListDone(handle, &value, 5000) == 0 && value == 3);
  CHECK(vlListWaitForListIdle(handle, &value, 5000) == 0 && value == 3);
  CHECK(progressSeen == 7);
  CHECK(vlListGetLastExecutionStats(handle, &stats) == 0);
  /* 10 at 0.02, 10 and 10 at 0.01, five times 1000 us */
  CHECK(stats.MacroVectors == 3 && stats.ExecutionTime == 500.0 + 1000.0 + 5000.0 + 1000.0);
  CHECK(vlListAbortExecution(handle) == 0);
  CHECK(vlListDelete(handle, 3, false) == 0);
  CHECK(vlListExecute(handle, 3) == -1 && vlGetLastErrorLen() > 50);
  CHECK(vlDisconnect(handle) == 0);
}

static void Run(int32_t handle, vlListEventCallback callback) {
  uint32_t id = 0;
  CHECK(vlListRegisterProgressCallback(handle, callback, &id) == 0);
  CHECK(vlListSet(handle, 1, MakeList(handle, 1000000), false, -1) == 0);
  CHECK(vlListExecute(handle, 1) == 0);
}

static void KillInTheMiddle(int32_t handle) {
  int32_t value = 0;
  char text[100];
  bool connected = true;
  Run(handle, CountProgress);
  CHECK(vlListWaitForProgress(handle, &value, 5000) == 0);
  EndCard();
  const time_t start = time(NULL);
  CHECK(vlListWaitForListDone(handle, &value, 60000) == -1);
  CHECK(time(NULL) - start < 10);
  vlGetLastError(text, (int)sizeof text);
  CHECK(strcmp(text, "ConnectionAborted") == 0);
  CHECK(vlListExecute(handle, 1) == -1);
  CHECK(vlIsConnected(handle, &connected) == 0 && !connected);
  CHECK(vlDisconnect(handle) == 0);
}

static long ResidentKiB(void) {
  long pages = 0;
  FILE* file = fopen("/proc/self/statm", "r");
  CHECK(file != NULL && fscanf(file, "%*d %ld", &pages) == 1);
  fclose(file);
  return pages * (sysconf(_SC_PAGESIZE) / 1024);
}

static int CountEntries(const char* directory) {
  int entries = 0;
  DIR* open = opendir(directory);
  CHECK(open != NULL);
  while (readdir(open) != NULL) ++entries;
  closedir(open);
  return entries;
}

static void Cycle(int port, int times) {
  for (int i = 0; i < times; ++i) {
    const int32_t handle = vlConnect("127.0.0.1", port);
    CHECK(handle > 0);
    CHECK(vlListAppendMarkAbs2D(vlListAllocate(handle), 1, 2) == 0);
    CHECK(vlDisconnect(handle) == 0);
  }
}

static void CheckCycles(int port) {
  Cycle(port, 200);
  const int descriptors = CountEntries("/proc/self/fd");
  const int threads = CountEntries("/proc/self/task");
  const long memory = ResidentKiB();
  Cycle(port, 1000);
  printf("after 1000 connections: %ld KiB more\n", ResidentKiB() - memory);
  CHECK(CountEntries("/proc/self/fd") == descriptors);
  CHECK(CountEntries("/proc/self/task") == threads);
  CHECK(SANITIZED || ResidentKiB() - memory < 512);
}

static void Idle(int port) {
  enum { Connections = 1000, MostKiB = 64 * 1024 };
  for (int i = 0; i < Connections; ++i) CHECK(vlConnect("127.0.0.1", port) > 0);
  printf("%d idle connections: %ld KiB resident\n", Connections, ResidentKiB());
  CHECK(SANITIZED || ResidentKiB() < MostKiB);
  for (int32_t handle = 2; handle < Connections; ++handle) CHECK(vlDisconnect(handle) == 0);
}

int main(int count, char** arguments) {
  if (count != 3) return 2;
  const char* mode = arguments[2];
  const struct rlimit descriptors = {4096, 4096};
  setrlimit(RLIMIT_NOFILE, &descriptors);
  const int port = StartCard(arguments[1], strcmp(mode, "job") == 0 ? "max" : "1");
  const int32_t handle = vlConnect("127.0.0.1", port);
  CHECK(handle > 0);
  if (strcmp(mode, "job") == 0) {
    Job(handle);
  } else if (strcmp(mode, "kill") == 0) {
    KillInTheMiddle(handle);
  } else if (strcmp(mode, "idle") == 0) {
    Idle(port);
  } else if (strcmp(mode, "cycle") == 0) {
    CheckCycles(port);
  } else if (strcmp(mode, "return") == 0) {
    CHECK(vlConnect("127.0.0.1", port) > 0);
    Run(handle, CountProgress);
  } else if (strcmp(mode, "callback") == 0) {
    int32_t value = 0;
    Run(handle, ExitNow);
    vlListWaitForListDone(handle, &value, 60000);
    sleep(60); /* The exit ended the connection, and with it the wait; the program ends under this thread. */
    Fail("the callback did not end the program");
  } else if (strcmp(mode, "stuck") == 0) {
    Run(handle, NeverReturn);
    while (!isStuck) usleep(1000);
  } else {
    return 2;
  }
  if (strcmp(mode, "return") != 0 && strcmp(mode, "stuck") != 0) EndCard();
  return 0;
}
