#include "process.h"

#include "call.h"
#include "kelvo/kelvo.h"

/* Speeds in mm/us (0.001 is 1 m/s), delays in us. */
void AppendProcessParameters(int64_t list) {
  CALL(vlListAppendJumpSpeed, list, 0.004);
  CALL(vlListAppendMarkSpeed, list, 0.001);
  CALL(vlListAppendJumpDelay, list, 250);    /* the galvos settle before the next mark */
  CALL(vlListAppendMarkDelay, list, 150);    /* the galvos, which lag behind, reach a stroke's end */
  CALL(vlListAppendPolyDelay, list, 50);     /* corners neither round off nor burn in */
  CALL(vlListAppendLaserOnDelay, list, 40);  /* the galvos get up to speed before the laser goes on */
  CALL(vlListAppendLaserOffDelay, list, 90); /* it stays on while they catch up; less than the mark delay */
}
