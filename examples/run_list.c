#include "run_list.h"

#include <stdio.h>

#include "call.h"
#include "kelvo/kelvo.h"

/* Shows what goes wrong on the card while the list runs. Called on the connection's receive thread. */
static void ShowError(int32_t handle, int32_t code, const char* message, uint32_t length) {
  (void)handle;
  (void)code;
  fprintf(stderr, "The card reports:\n%.*s\n", (int)length, message);
}

/* The card goes idle after the list however it ends; when it was run to its end, "done" came before. */
bool RunList(int32_t handle, int32_t listId, int32_t timeoutMs) {
  uint32_t callbackId = 0;
  int32_t list = 0;
  CALL(vlListRegisterErrorEventCallback, handle, ShowError, &callbackId);
  CALL(vlListClearPendingEvents, handle); /* events of an earlier run are not ours */
  CALL(vlListExecute, handle, listId);
  if (CALL(vlListWaitForListIdle, handle, &list, timeoutMs) != 0) {
    fprintf(stderr, "List %d took longer than %d ms and was aborted.\n", (int)listId, (int)timeoutMs);
    CALL(vlListAbortExecution, handle);
  }
  CALL(vlListUnRegisterErrorEventCallback, handle, callbackId);
  return CALL(vlListWaitForListDone, handle, &list, 0) == 0;
}
