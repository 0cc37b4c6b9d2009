// How positions of commands become positions of the galvos: the scaling factor and the heading scale first,
// then the transformation.
#pragma once

#include <array>

#include "execution/Vector.h"

namespace VELTRO::KELVO::Simulation {

class Transformation {
 public:
  using Matrix = std::array<ClientLib::Point3D, 3>;  // rows

  void SetScaling(ClientLib::Point2D factors);
  void SetHeadingScale(ClientLib::Point3D factors);
  void SetAffine(const Matrix& matrix, ClientLib::Point3D shift);

  ClientLib::Point3D Apply(const ClientLib::Point3D& position) const { return shift_ + Turn(position); }
  // Applies it to a difference of positions.
  ClientLib::Point3D Turn(const ClientLib::Point3D& vector) const;
  // The position whose image is `image`, or comes closest. `near` decides in directions that are flattened.
  ClientLib::Point3D Invert(const ClientLib::Point3D& image, ClientLib::Point3D near) const;

 private:
  void Combine();

  ClientLib::Point3D scaling_{{1, 1, 1}};
  ClientLib::Point3D heading_{{1, 1, 1}};
  Matrix affine_{{{{1, 0, 0}}, {{0, 1, 0}}, {{0, 0, 1}}}};
  ClientLib::Point3D shift_;
  Matrix combined_ = affine_;
};

}  // namespace VELTRO::KELVO::Simulation
