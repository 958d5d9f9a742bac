// The view model: view matrix and angles, perspective, rotation, and the
// final angles printed at the end of a run.
#include <gtest/gtest.h>

#include <cmath>

#include "viewer/view_model.h"

using namespace quintor;

TEST(ViewModel, MatrixAnglesPerspectiveAndRotation) {
  // Build and extract are inverse; at 90 degrees the whole turn goes to Gam.
  double a, b, g;
  ExtractViewAngles(BuildViewMatrix(0.3, -0.4, 1.1), a, b, g);
  EXPECT_NEAR(a, 0.3, 1e-12);
  EXPECT_NEAR(b, -0.4, 1e-12);
  EXPECT_NEAR(g, 1.1, 1e-12);
  ExtractViewAngles(BuildViewMatrix(0.5, constants::Pi / 2, 0.2), a, b, g);
  EXPECT_EQ(a, 0.0);
  EXPECT_NEAR(b, constants::Pi / 2, 1e-7);
  EXPECT_NEAR(g, 0.7, 1e-6);

  ViewState v;
  EXPECT_EQ(PerspectiveFactor(v, 5.0), 1.0);
  v.perspectiveOn = 1;
  EXPECT_DOUBLE_EQ(PerspectiveFactor(v, 5.0), 1.5);
  EXPECT_DOUBLE_EQ(PerspectiveFactor(v, -5.0), 1.0 / 1.5);
  EXPECT_EQ(PerspectiveFactor(v, 0.0), 1.0);

  // A rotation of zero before any rotation collapses the view to zero: kept.
  ViewState w;
  RotateView(w, 0, 0, 0);
  EXPECT_EQ(w.matrix[0][0], 0.0);
  ViewState z;
  RotateView(z, 0.1, 0, 0);
  RotateView(z, 0, 0, 0);  // repeats the last rotation
  EXPECT_NEAR(z.matrix[0][1], std::sin(0.2), 1e-12);
  ResetView(z);
  EXPECT_EQ(LabCoords(z, Vec3{1, 2, 3}), (Vec3{1, 2, 3}));
}

TEST(ViewModel, FinalAnglesOfTheMatrix) {
  Vec3 id = FinalViewAngles(BuildViewMatrix(0, 0, 0));
  EXPECT_EQ(id, (Vec3{0, 0, 0}));
  // A turn about z alone has no middle angle; the third takes it all.
  Vec3 z = FinalViewAngles(BuildViewMatrix(0, 0, 0.5));
  EXPECT_NEAR(z[1], 0.0, 1e-9);
  EXPECT_NEAR(std::fabs(z[2]), 0.5 / constants::DegToRad, 1e-9);
  // The middle angle is the arc cosine of R(3,3).
  Mat3 r = BuildViewMatrix(0.7, 0.2, 0.1);
  EXPECT_NEAR(FinalViewAngles(r)[1], std::acos(r[2][2]) / constants::DegToRad, 1e-9);
}
