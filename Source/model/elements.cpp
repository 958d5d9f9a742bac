#include "model/elements.h"

#include <array>
#include <cctype>

#include "io/fortran_io.h"

namespace quintor {

namespace {

constexpr std::array<std::string_view, 111> kSymbols = {
    "  ",                                                              // 0
    "H ", "He", "Li", "Be", "B ", "C ", "N ", "O ", "F ", "Ne",        // 1-10
    "Na", "Mg", "Al", "Si", "P ", "S ", "Cl", "Ar", "K ", "Ca",        // 11-20
    "Sc", "Ti", "V ", "Cr", "Mn", "Fe", "Co", "Ni", "Cu", "Zn",        // 21-30
    "Ga", "Ge", "As", "Se", "Br", "Kr", "Rb", "Sr", "Y ", "Zr",        // 31-40
    "Nb", "Mo", "Tc", "Ru", "Rh", "Pd", "Ag", "Cd", "In", "Sn",        // 41-50
    "Sb", "Te", "I ", "Xe", "Cs", "Ba", "La", "Ce", "Pr", "Nd",        // 51-60
    "Pm", "Sm", "Eu", "Gd", "Tb", "Dy", "Ho", "Er", "Tm", "Yb",        // 61-70
    "Lu", "Hf", "Ta", "W ", "Re", "Os", "Ir", "Pt", "Au", "Hg",        // 71-80
    "Tl", "Pb", "Bi", "Po", "At", "Rn", "Fr", "Ra", "Ac", "Th",        // 81-90
    "Pa", "U ", "Np", "Pu", "Am", "Cm", "X ", "Xx", "Du", "Du",        // 91-100
    "Du", "Du", "Du", "Du", "Du", "Du", "Du", "Du", "Du", "Du"};       // 101-110

constexpr std::array<double, 105> kMasses = {
    0.0,
    1.00782,  4.0026,   7.016,    9.01218,  11.00931, 12.0,     14.00307, 15.99491, 18.9984,  19.99244,
    22.9898,  23.98504, 26.98153, 27.97693, 30.97376, 31.97207, 34.96885, 39.948,   38.96371, 39.96259,
    44.95592, 47.9,     50.944,   51.9405,  54.9381,  55.9349,  58.9332,  57.9353,  62.9298,  63.9291,
    68.9257,  73.9219,  74.9216,  79.9165,  78.9183,  83.9115,  84.9117,  87.9056,  89.9054,  89.9043,
    92.906,   97.9055,  97.0,     101.9037, 102.9048, 105.9032, 106.9041, 113.9036, 114.9041, 119.9022,
    120.9038, 129.9067, 126.9044, 131.9042, 132.9054, 137.9052, 138.9063, 139.9054, 140.9076, 141.9077,
    144.9127, 151.9197, 152.9212, 157.9241, 158.9253, 163.9292, 164.9303, 165.9303, 168.9342, 173.9389,
    174.9408, 179.9465, 180.948,  183.9509, 186.9557, 191.9615, 192.9629, 194.9648, 196.9665, 201.9706,
    204.9744, 207.9766, 208.9804, 208.9824, 209.9871, 222.0176, 223.0197, 226.0254, 227.0278, 232.0381,
    231.0359, 238.0508, 237.0482, 244.0642, 243.0614, 247.0703, 247.0703, 251.0796, 252.0829, 257.0751,
    258.0986, 259.1009, 260.1053, 261.1087};

}  // namespace

std::string_view ElementSymbol(int z) {
  return z >= 1 && z <= 110 ? kSymbols[z] : kSymbols[0];
}

double DefaultMass(int z) { return z >= 1 && z <= 104 ? kMasses[z] : 0.0; }

int ElementNumber(std::string_view word, int lastSearched) {
  std::string letters;
  for (char c : word) {
    if (std::isdigit(static_cast<unsigned char>(c)) || c == ' ') break;
    letters.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
  }
  if (letters.size() > 5) letters.resize(5);
  for (int z = 1; z <= lastSearched && z <= 110; ++z)
    if (Upper(Trim(kSymbols[z])) == letters && !letters.empty()) return z;
  return 0;
}

std::string AtomName(int z, int index) {
  std::string name;
  for (char c : ElementSymbol(z))
    if (c != ' ') name.push_back(c);
  name += std::to_string(index);
  if (name.size() > 5) name.resize(5);
  return name;
}

}  // namespace quintor
