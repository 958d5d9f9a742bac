// The formatting module: Fortran edit descriptors on output, fixed columns
// and free-form reads on input.
#include <gtest/gtest.h>

#include "io/fortran_io.h"

using namespace quintor;

TEST(FortranOutput, EditDescriptors) {
  EXPECT_EQ(FmtF(-76.40891234, 25, 10), "           -76.4089123400");
  EXPECT_EQ(FmtF(0.5, 4, 3), ".500");  // one column short: the optional leading zero goes
  EXPECT_EQ(FmtF(-0.5, 5, 3), "-.500");
  EXPECT_EQ(FmtF(12345.678, 8, 3), "********");  // too wide: asterisks
  EXPECT_EQ(FmtF(-1.0, 4, 3), "****");
  EXPECT_EQ(FmtF(2.5e-7, 10, 6), "  0.000000");
  EXPECT_EQ(FmtF(0.0000006, 10, 6), "  0.000001");
  EXPECT_EQ(FmtE(-0.00123456, 13, 5), " -1.23456E-03");
  EXPECT_EQ(FmtE(0.0, 11, 4), " 0.0000E+00");
  EXPECT_EQ(FmtE(1.5e123, 11, 4), " 1.5000+123");  // three-digit exponents lose the E
  EXPECT_EQ(FmtE(1.0, 5, 4), "*****");
  EXPECT_EQ(FmtG(123.456, 12, 5), "  123.46    ");
  EXPECT_EQ(FmtG(1.0e-3, 12, 5), "  1.0000E-03");
  EXPECT_EQ(FmtG(1.0e7, 12, 5), "  1.0000E+07");
  EXPECT_EQ(FmtI(-1, 5), "   -1");
  EXPECT_EQ(FmtI(-1000, 4), "****");
  EXPECT_EQ(FmtA("LONGNAME", 4), "LONG");
  EXPECT_EQ(FmtA("C2v", 4), "C2v ");
}

TEST(FortranInput, FixedColumnsAndNumberForms) {
  FieldPlace where{"x.log", 7, 0, 0, "energy"};
  EXPECT_DOUBLE_EQ(ReadFixedReal(" SCF Done:  E(RHF) =  -76.4089123456     A.U.", 21, 17, 0, where), -76.4089123456);
  EXPECT_EQ(ReadFixedReal("          ", 1, 10, 3, where), 0.0);  // blank field
  EXPECT_EQ(ReadFixedReal("abc", 50, 10, 3, where), 0.0);         // beyond the line
  EXPECT_EQ(ReadFixedInt(" Multiplicity = 2", 16, 3, where), 2);
  EXPECT_DOUBLE_EQ(*ParseFortranReal("12345", 3), 12.345);  // implied decimals
  EXPECT_DOUBLE_EQ(*ParseFortranReal("1.5", 3), 1.5);      // an explicit point wins
  EXPECT_DOUBLE_EQ(*ParseFortranReal("-2.5d+2"), -250.0);
  EXPECT_DOUBLE_EQ(*ParseFortranReal("1.0-05"), 1.0e-5);
  EXPECT_DOUBLE_EQ(*ParseFortranReal("12E1", 1), 12.0);
  EXPECT_DOUBLE_EQ(*ParseFortranReal(" 1 2.5 "), 12.5);  // blanks are ignored
  for (const char* bad : {"abc", "1.2.3", "1.0E", "-"}) EXPECT_FALSE(ParseFortranReal(bad)) << bad;
  EXPECT_FALSE(ParseFortranInt("3.5"));
  EXPECT_EQ(*ParseFortranInt(" -17 "), -17);
}

TEST(FortranInput, UnreadableFieldNamesFileLineColumnsAndText) {
  FieldPlace where{"water.log", 42, 0, 0, "X coordinate"};
  try {
    ReadFixedReal("    1   8   0.0000  1.2x34  0.0000", 19, 8, 4, where);
    FAIL() << "no error";
  } catch (const FatalReadError& e) {
    const std::string msg = e.what();
    for (const char* part : {"water.log", "line 42", "columns 19-26", "X coordinate", "\"  1.2x34\""})
      EXPECT_NE(msg.find(part), std::string::npos) << part << " in " << msg;
  }
}

TEST(FortranInput, FreeForm) {
  FieldPlace where{"f", 1, 0, 0, "values"};
  auto v = ReadFreeReals("  1.0, 2.5D0  -3 / 99", 3, where);
  ASSERT_EQ(v.size(), 3u);
  EXPECT_DOUBLE_EQ(v[1], 2.5);
  EXPECT_DOUBLE_EQ(v[2], -3.0);
  EXPECT_THROW(ReadFreeReals("1.0 2.0 / 3.0", 3, where), FatalReadError);  // "/" ends the list
  EXPECT_THROW(ReadFreeReals("1.0 x 3.0", 3, where), FatalReadError);
  EXPECT_THROW(ReadFreeInts("1 2.5", 2, where), FatalReadError);
  EXPECT_FALSE(ReadFreeReal("   ", where));  // empty: nothing read, the default stays
  EXPECT_DOUBLE_EQ(*ReadFreeReal("300.5 K", where), 300.5);
}
