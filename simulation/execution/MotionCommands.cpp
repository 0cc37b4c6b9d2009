#include "execution/CommandTable.h"
#include "lists/CommandCodes.h"

namespace VELTRO::KELVO::Simulation {

using ClientLib::CommandCode;
using ClientLib::Point2D;
using ClientLib::Point3D;

std::span<const CommandRow> MotionCommands() {
  static constexpr CommandRow Rows[] = {
      {CommandCode::JUMP_ABS, [](Run& run, Point2D p) { run.Galvos.Jump(run.Galvos.To(p)); }},
      {CommandCode::JUMP_REL, [](Run& run, Point2D p) { run.Galvos.Jump(run.Galvos.By(p)); }},
      {CommandCode::JUMP_3D_ABS, [](Run& run, Point3D p) { run.Galvos.Jump(run.Galvos.To(p)); }},
      {CommandCode::JUMP_3D_REL, [](Run& run, Point3D p) { run.Galvos.Jump(run.Galvos.By(p)); }},
      {CommandCode::MARK_ABS, [](Run& run, Point2D p) { run.Galvos.Mark(run.Galvos.To(p)); }},
      {CommandCode::MARK_REL, [](Run& run, Point2D p) { run.Galvos.Mark(run.Galvos.By(p)); }},
      {CommandCode::MARK_3D_ABS, [](Run& run, Point3D p) { run.Galvos.Mark(run.Galvos.To(p)); }},
      {CommandCode::MARK_3D_REL, [](Run& run, Point3D p) { run.Galvos.Mark(run.Galvos.By(p)); }},
      // Without an encoder there is no motion to stop, only the jump to where the field comes to rest.
      {CommandCode::STOP_MOTF, [](Run& run, Point2D p) { run.Galvos.Jump(run.Galvos.To(p)); }},
      {CommandCode::STOP_MOTF_3D, [](Run& run, Point3D p) { run.Galvos.Jump(run.Galvos.To(p)); }},
      {CommandCode::MAGNIFICATION_ABS, [](Run& run, double m, bool wait) { run.Galvos.Magnify(m, wait); }},
      {CommandCode::MAGNIFICATION_REL,
       [](Run& run, double m, bool wait) { run.Galvos.Magnify(run.Galvos.GetMagnification() + m, wait); }},
  };
  return Rows;
}

}  // namespace VELTRO::KELVO::Simulation
