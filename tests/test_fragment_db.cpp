// The fragment database: reading, adding by symbol or synonym, the writer's
// layout, the locked append, the replace-a-hydrogen builder and the shipped
// stock.
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <ctime>
#include <regex>
#include <set>
#include <sstream>

#include "analysis/connectivity.h"
#include "io/fortran_io.h"
#include "readers/elements.h"
#include "test_support.h"
#include "viewer/fragment_db.h"
#include "viewer/journal.h"

namespace quintor {

using namespace geom;
using namespace test;
namespace {

ElementTable Elements() {
  return {[](std::string_view label) { return ElementNumber(label); },
          [](int z) { return std::string(Trim(ElementSymbol(z))); }, [](int z) { return DefaultMass(z); }};
}

const std::string kStock = std::string(QUINTOR_TEST_INPUTS) + "/../../data/Quintor.fdb";

const char* kTwoRecords =
    "! comment\n"
    "# Me methyl CH3 a b c sixth\n"
    "C1   0.0 0.0 0.0   2 3 4 0\n"
    "H2   1.09 0.0 0.0  1\n"
    "H3  -0.36 1.03 0.0 1\n"
    "H4  -0.36 -0.51 0.89 1\n"
    "\n"
    "# averyveryverylongfragmentname methyl\n"
    "O1 0 0 0 2\n"
    "H2 0 0 0.96 1\n";

TEST(FragmentDb, HeadersKeepFiveNamesOfTwentyCharacters) {
  TempDir dir;
  const FragmentDatabase db = ReadFragmentDatabase(dir.Write("Quintor.fdb", kTwoRecords), Elements());
  ASSERT_EQ(db.records.size(), 2u);
  EXPECT_TRUE(db.problems.empty());
  EXPECT_EQ(db.records[0].names, (std::vector<std::string>{"Me", "methyl", "CH3", "a", "b"}));
  EXPECT_EQ(db.records[0].headerLine, 2);
  EXPECT_EQ(db.records[1].names[0], "averyveryverylongfra");
  EXPECT_EQ(db.records[0].atoms[0].bonds, (std::vector<int>{2, 3, 4}));
  EXPECT_EQ(FindFragments(db, "AVERYVERYVERYLONGFRAGMENT").size(), 1u);  // cut to 20 on both sides
}

TEST(FragmentDb, SymbolFirstThenEveryRecordOfTheName) {
  TempDir dir;
  const std::string path = dir.Write("Quintor.fdb", std::string(kTwoRecords) + "\n# Ne neon-record\nC1 0 0 0\n");
  const FragmentDatabase db = ReadFragmentDatabase(path, Elements());
  BuiltStructure b;
  EXPECT_EQ(AddFragmentAt(b, db, "c", {1, 2, 3}, Elements()), 1);
  EXPECT_EQ(b.z, (std::vector<int>{6}));
  EXPECT_NEAR(b.xyz[0][2] * constants::BohrToAngstrom, 3.0, 1e-12);
  EXPECT_EQ(AddFragmentAt(b, db, "ne", {0, 0, 0}, Elements()), 1);  // the element, never the record
  EXPECT_EQ(b.z.back(), 10);
  // "methyl" names both records: 4 + 2 atoms, bonds counted on from the old N = 2.
  EXPECT_EQ(AddFragmentAt(b, db, "METHYL", {1, 1, 1}, Elements()), 6);
  EXPECT_EQ(b.bonds[2], (std::vector<int>{4, 5, 6}));
  EXPECT_EQ(b.bonds[6], (std::vector<int>{8}));
  EXPECT_NEAR(b.xyz[6][0] * constants::BohrToAngstrom, 1.0, 1e-12);  // the first atom on the point
  EXPECT_EQ(AddFragmentAt(b, db, "unknown", {0, 0, 0}, Elements()), 0);
}

TEST(FragmentDb, MalformedLineIsReportedOnceAndItsRecordSkipped) {
  TempDir dir;
  const std::string path = dir.Write("Quintor.fdb", std::string(kTwoRecords) +
                                                        "\n# short\nC1 0 0\nC2 0 0\n"
                                                        "\n# pastend\nC1 0 0 0 2\nO2 1.2 0 0 7\n"
                                                        "\n# huge\nC1 1+464 0 0\n"
                                                        "\n# self\nC1 0 0 0\nO2 1.2 0 0 2\n"
                                                        "\n# wrap\nN1 0 0 0 7777777770\n");
  const FragmentDatabase db = ReadFragmentDatabase(path, Elements());
  ASSERT_EQ(db.problems.size(), 5u);
  EXPECT_NE(db.problems[0].find("line 13: fewer than three coordinates"), std::string::npos) << db.problems[0];
  EXPECT_NE(db.problems[1].find("line 18: bond to atom 7"), std::string::npos) << db.problems[1];
  EXPECT_NE(db.problems[2].find("line 21: coordinate \"1+464\" is no number"), std::string::npos) << db.problems[2];
  EXPECT_NE(db.problems[3].find("line 25: bond of the atom to itself"), std::string::npos) << db.problems[3];
  EXPECT_NE(db.problems[4].find("line 28: bond \"7777777770\" is no atom number"), std::string::npos) << db.problems[4];
  EXPECT_EQ(db.records.size(), 2u);
  EXPECT_TRUE(FindFragments(db, "short").empty());
  EXPECT_EQ(FindFragments(db, "Me").size(), 1u);
}

// Ethanol with its O-H hydrogen and the oxygen marked, in that order.
BuiltStructure Ethanol() {
  const FragmentDatabase db = ReadFragmentDatabase(kStock, Elements());
  BuiltStructure b;
  AddFragmentAt(b, db, "OEt", {0.1, 0.2, 0.3}, Elements());
  return b;
}

TEST(FragmentDb, StoredFragmentComesBackByEverySynonym) {
  if (!std::filesystem::exists(kStock)) GTEST_SKIP() << "no " << kStock;
  BuiltStructure b = Ethanol();
  ASSERT_EQ(b.Atoms(), 8);
  b.z.push_back(17), b.xyz.push_back({20, 20, 20}), b.bonds.emplace_back();  // not in the fragment
  const std::vector<int> marked{3, 1};
  const std::vector<int> fragment = ConnectedAtoms(b, 1);
  ASSERT_EQ(fragment.size(), 8u);
  const std::string block = FragmentBlock(b, fragment, marked, "ethanolx  EtOHx  C2H5OHx", "by hand",
                                          std::time(nullptr), Elements());
  // An empty line, the comment, the date line, the header, then the atoms
  // in the writer's columns with the marked ones first.
  EXPECT_TRUE(std::regex_search(block, std::regex(R"(^\n! by hand\n! -- \d\d\.\d\d\.\d{4}  \d\d:\d\d:\d\d --\n# ethanolx EtOHx C2H5OHx\n)")))
      << block;
  EXPECT_TRUE(std::regex_search(block, std::regex(R"(\nC1    ( {2,4}-?\d\.\d{6}){3}( {2,3}\d{1,2}){16}\n)"))) << block;

  TempDir dir;
  std::string error;
  const std::string path = dir.Write("Quintor.fdb", "# old\nH1 0 0 0\n\n\n\n");
  ASSERT_TRUE(AppendFragmentBlock(path, block, error)) << error;
  EXPECT_EQ(ReadFile(path).substr(0, 20), "# old\nH1 0 0 0\n\n! by");  // trailing empty lines gave way
  const FragmentDatabase db = ReadFragmentDatabase(path, Elements());
  ASSERT_TRUE(db.problems.empty());
  for (const char* name : {"ethanolx", "etohx", "C2H5OHX"}) {
    BuiltStructure back;
    const Vec3 point = constants::BohrToAngstrom * b.xyz[2];
    ASSERT_EQ(AddFragmentAt(back, db, name, point, Elements()), 8) << name;
    std::vector<int> order{3, 1, 2, 4, 5, 6, 7, 8};
    for (int k = 0; k < 8; ++k) {
      EXPECT_EQ(back.z[k], b.z[order[k] - 1]);
      for (int c = 0; c < 3; ++c)
        EXPECT_NEAR(back.xyz[k][c] * constants::BohrToAngstrom, b.xyz[order[k] - 1][c] * constants::BohrToAngstrom,
                    1e-6);
    }
    EXPECT_EQ(back.bonds[0].size(), b.bonds[2].size());
  }
}

TEST(FragmentDb, TwoProcessesAppendingAtOnceBothKeepEveryRecord) {
  TempDir dir;
  const std::string path = dir.File("Quintor.fdb");
  BuiltStructure b;
  for (int k = 0; k < 30; ++k) b.z.push_back(6), b.xyz.push_back({1.0 * k, 0, 0}), b.bonds.push_back({});
  std::vector<int> all(30);
  for (int k = 0; k < 30; ++k) all[k] = k + 1;
  pid_t children[2];
  for (int p = 0; p < 2; ++p) {
    children[p] = fork();
    ASSERT_GE(children[p], 0);
    if (children[p] == 0) {
      std::string error;
      bool ok = true;
      for (int r = 0; r < 40; ++r) {
        const std::string name = std::to_string(p * 100 + r);
        ok &= AppendFragmentBlock(path, FragmentBlock(b, all, {}, name, "", 0, Elements()), error);
      }
      _exit(ok ? 0 : 1);
    }
  }
  for (pid_t c : children) {
    int status = 0;
    waitpid(c, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
  }
  const FragmentDatabase db = ReadFragmentDatabase(path, Elements());
  EXPECT_TRUE(db.problems.empty());
  ASSERT_EQ(db.records.size(), 80u);
  for (const FragmentRecord& r : db.records) EXPECT_EQ(r.atoms.size(), 30u) << r.names[0];
}

// Bonds as unordered pairs, by the project's connectivity.
std::set<std::pair<int, int>> Bonds(const std::vector<int>& z, const std::vector<Vec3>& xyzAngstrom) {
  NeighbourTable t;
  Connect(0, z, xyzAngstrom, NeighbourSlots, t);
  std::set<std::pair<int, int>> out;
  for (int i = 0; i < t.Atoms(); ++i)
    for (int k = 0; k < std::min(t.count[i], NeighbourSlots); ++k)
      if (t.slots[i][k] > i + 1) out.insert({i + 1, t.slots[i][k]});
  return out;
}

TEST(FragmentDb, ShippedStockLoadsWithConsistentBonds) {
  if (!std::filesystem::exists(kStock)) GTEST_SKIP() << "no " << kStock;
  const FragmentDatabase db = ReadFragmentDatabase(kStock, Elements());
  EXPECT_TRUE(db.problems.empty());
  EXPECT_GE(db.records.size(), 60u);
  std::set<std::string> seen;
  for (const FragmentRecord& r : db.records) {
    ASSERT_FALSE(r.atoms.empty());
    std::vector<int> z;
    std::vector<Vec3> xyz;
    std::set<std::pair<int, int>> stored;
    for (size_t k = 0; k < r.atoms.size(); ++k) {
      z.push_back(r.atoms[k].z), xyz.push_back(r.atoms[k].xyz);
      for (int n : r.atoms[k].bonds)
        if (n > static_cast<int>(k) + 1) stored.insert({static_cast<int>(k) + 1, n});
    }
    EXPECT_EQ(Bonds(z, xyz), stored) << r.names[0];
    for (const std::string& n : r.names) {
      EXPECT_TRUE(seen.insert(Upper(n)).second) << "synonym " << n << " twice";
      EXPECT_EQ(ElementNumber(n) > 0 && Upper(Trim(ElementSymbol(ElementNumber(n)))) == Upper(n), false) << n;
    }
  }
}

TEST(FragmentDb, EveryShippedFragmentReplacesAHydrogenOfBenzene) {
  if (!std::filesystem::exists(kStock)) GTEST_SKIP() << "no " << kStock;
  const FragmentDatabase db = ReadFragmentDatabase(kStock, Elements());
  BuiltStructure benzene;
  ASSERT_EQ(AddFragmentAt(benzene, db, "benzene", {0, 0, 0}, Elements()), 12);
  int hydrogen = 0;
  for (int i = benzene.Atoms(); i >= 1; --i)
    if (benzene.z[i - 1] == 1) hydrogen = i;
  const int carbon = benzene.bonds[hydrogen - 1].front();
  for (const FragmentRecord& r : db.records) {
    BuiltStructure b = benzene;
    ASSERT_EQ(ReplaceHydrogen(b, hydrogen, db, r.names[0], Elements()), static_cast<int>(r.atoms.size()));
    // Expected: benzene less that H, the fragment after it, one bond between.
    std::set<std::pair<int, int>> expected;
    auto renumber = [&](int a) { return a > hydrogen ? a - 1 : a; };
    std::vector<int> z0;
    std::vector<Vec3> x0;
    for (int i = 0; i < benzene.Atoms(); ++i)
      z0.push_back(benzene.z[i]), x0.push_back(constants::BohrToAngstrom * benzene.xyz[i]);
    for (auto [i, j] : Bonds(z0, x0))
      if (i != hydrogen && j != hydrogen) expected.insert({renumber(i), renumber(j)});
    std::vector<int> zf;
    std::vector<Vec3> xf;
    for (const FragmentAtom& a : r.atoms) zf.push_back(a.z), xf.push_back(a.xyz);
    const int offset = benzene.Atoms() - 1;
    for (auto [i, j] : Bonds(zf, xf)) expected.insert({i + offset, j + offset});
    expected.insert({renumber(carbon), offset + 1});

    std::vector<Vec3> x;
    for (const Vec3& p : b.xyz) x.push_back(constants::BohrToAngstrom * p);
    EXPECT_EQ(Bonds(b.z, x), expected) << r.names[0];
    double closest = 1e9;
    for (size_t i = 0; i < x.size(); ++i)
      for (size_t j = 0; j < i; ++j) closest = std::min(closest, Norm(x[i] - x[j]));
    EXPECT_GT(closest, 0.9) << r.names[0];
  }
  BuiltStructure b = benzene;
  EXPECT_EQ(ReplaceHydrogen(b, carbon, db, "Me", Elements()), -1);  // not a hydrogen
}

// The menu items through a journal: dialog 110 answered once with a bad X
// (shown again), methane at a point, one H of it replaced by phenyl, then the
// toluene stored under two names and found again.
TEST(FragmentDb, AddAndStoreThroughAJournal) {
  if (!std::filesystem::exists(kStock)) GTEST_SKIP() << "no " << kStock;
  TempDir dir;
  const std::string db = dir.Write("Quintor.fdb", ReadFile(kStock));
  const ElementTable elements = Elements();
  Session s;
  s.files.fragmentDb = db;
  ViewerState v;
  v.elements = &elements;
  StartViewer(s, v);
  std::istringstream journal(
      "menu AddFragment\n"
      "answer 1 1013=methane\t1000=abc\t1006=0\t1043=0\n"
      "answer 1 1013=methane\t1000=0.5\t1006=0\t1043=0\n"
      "click left 3\n"
      "menu AddFragment\n"
      "answer 1 1013=ph\t1000=0\t1006=0\t1043=0\n"
      "click left 1\n"
      "menu StoreFragment\n"
      "answer 1 1013=tolx toluenex\t1000=made by a journal\n");
  ReplayJournal(s, v, journal, "test.jnl");
  ASSERT_EQ(s.nAtoms, 15);
  EXPECT_NEAR(s.xyz[0][0] * constants::BohrToAngstrom, 0.5, 1e-12);  // the second answer's point
  EXPECT_NEAR(s.molMass, 92.0626, 1e-3);  // C7H8, most abundant isotopes
  EXPECT_EQ(s.atomName[14], "H15");
  EXPECT_TRUE(v.structureEdited);
  const FragmentDatabase back = ReadFragmentDatabase(db, elements);
  const auto found = FindFragments(back, "TOLUENEX");
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0]->atoms.size(), 15u);
  EXPECT_EQ(found[0]->atoms[0].z, 6);
  EXPECT_NE(ReadFile(db).find("! made by a journal\n! -- "), std::string::npos);
}

// In the Edit mode (F4) the key N adds from the database as the menu does.
TEST(FragmentDb, EditModeKeyAddsAFragment) {
  if (!std::filesystem::exists(kStock)) GTEST_SKIP() << "no " << kStock;
  TempDir dir;
  const ElementTable elements = Elements();
  Session s;
  s.files.fragmentDb = dir.Write("Quintor.fdb", ReadFile(kStock));
  ViewerState v;
  v.elements = &elements;
  StartViewer(s, v);
  std::istringstream journal(
      "menu AddFragment\n"
      "answer 1 1013=methane\t1000=0\t1006=0\t1043=0\n"
      "key F4\n"
      "key n\n"
      "answer 1 1013=water\t1000=4\t1006=0\t1043=0\n");
  ReplayJournal(s, v, journal, "test.jnl");
  EXPECT_EQ(s.nAtoms, 8);
  EXPECT_NEAR(s.molMass, 16.0313 + 18.0106, 1e-3);
}

}  // namespace
}  // namespace quintor
