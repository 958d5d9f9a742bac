#!/usr/bin/env python3
"""Builds the shipped fragment database data/Quintor.fdb.

Each fragment is a SMILES string: Open Babel (--gen3d) makes a 3D guess,
xtb (GFN2, --opt) relaxes it, and Open Babel perceives the bonds of the
relaxed geometry. A substituent is written as its parent with a capping
hydrogen first ("[H]C" for methyl); the cap is dropped after the
optimisation, so that the atom it was bonded to - the attachment atom -
comes first in the record, where the Fragment edit mode puts the point or
the bond to the replaced hydrogen.

The output is the same file on every run. Open Babel has no seed option:
its builder and conformer search draw from rand(), seeded by the clock, so
obabel runs under faketime with the clock stopped at one moment, which
fixes the seed; xtb runs on one thread, so that its sums are added in one
order.

Usage: tools/make_fragment_stock.py [output]   (default data/Quintor.fdb)
Needs the Debian packages openbabel, xtb and faketime.
"""
import os
import subprocess
import sys
import tempfile

# (names, SMILES, capped): names are the synonyms of the header (at most
# five, each up to 20 characters, none an element symbol).
SUBSTITUENTS = [
    ("Me methyl CH3", "[H]C"),
    ("Et ethyl C2H5", "[H]CC"),
    ("nPr propyl n-propyl", "[H]CCC"),
    ("iPr isopropyl i-propyl", "[H]C(C)C"),
    ("nBu butyl n-butyl", "[H]CCCC"),
    ("tBu tert-butyl t-butyl", "[H]C(C)(C)C"),
    ("cHex cyclohexyl", "[H]C1CCCCC1"),
    ("Ph phenyl C6H5", "[H]c1ccccc1"),
    ("Bn benzyl CH2Ph", "[H]Cc1ccccc1"),
    ("Tol p-tolyl tolyl", "[H]c1ccc(C)cc1"),
    ("vinyl ethenyl CHCH2", "[H]C=C"),
    ("allyl CH2CHCH2", "[H]CC=C"),
    ("ethynyl CCH", "[H]C#C"),
    ("OH hydroxy hydroxyl", "[H]O"),
    ("OMe methoxy OCH3", "[H]OC"),
    ("OEt ethoxy OC2H5", "[H]OCC"),
    ("OPh phenoxy", "[H]Oc1ccccc1"),
    ("OAc acetoxy", "[H]OC(=O)C"),
    ("NH2 amino", "[H]N"),
    ("NHMe methylamino", "[H]NC"),
    ("NMe2 dimethylamino", "[H]N(C)C"),
    ("NHAc acetamido", "[H]NC(=O)C"),
    ("NO2 nitro", "[H][N+](=O)[O-]"),
    ("CN cyano nitrile", "[H]C#N"),
    ("CHO formyl aldehyde", "[H]C=O"),
    ("COMe acetyl", "[H]C(=O)C"),
    ("COOH carboxyl carboxy", "[H]C(=O)O"),
    ("COOMe methoxycarbonyl CO2Me", "[H]C(=O)OC"),
    ("CONH2 carbamoyl amide", "[H]C(=O)N"),
    ("CF3 trifluoromethyl", "[H]C(F)(F)F"),
    ("CCl3 trichloromethyl", "[H]C(Cl)(Cl)Cl"),
    ("SH mercapto thiol sulfanyl", "[H]S"),
    ("SMe methylthio", "[H]SC"),
    ("SO3H sulfo sulfonic", "[H]S(=O)(=O)O"),
    ("SO2Me mesyl methylsulfonyl", "[H]S(=O)(=O)C"),
    ("fluoro fluorine", "[H]F"),
    ("chloro chlorine", "[H]Cl"),
    ("bromo bromine", "[H]Br"),
    ("iodo iodine", "[H]I"),
    ("SiMe3 TMS trimethylsilyl", "[H][Si](C)(C)C"),
]

MOLECULES = [
    ("benzene C6H6", "c1ccccc1"),
    ("pyridine C5H5N", "n1ccccc1"),
    ("pyrrole C4H5N", "n1cccc1"),
    ("furan C4H4O", "o1cccc1"),
    ("thiophene C4H4S", "s1cccc1"),
    ("imidazole C3H4N2", "n1cncc1"),
    ("cyclopentane C5H10", "C1CCCC1"),
    ("cyclohexane chair C6H12 cyclohexane-chair", "C1CCCCC1"),
    ("naphthalene C10H8", "c1ccc2ccccc2c1"),
    ("water H2O", "O"),
    ("ammonia NH3", "N"),
    ("methane CH4", "C"),
    ("CO2 carbon-dioxide", "O=C=O"),
    ("ethane C2H6", "CC"),
    ("ethylene ethene C2H4", "C=C"),
    ("acetylene ethyne C2H2", "C#C"),
    ("methanol MeOH CH3OH", "OC"),
    ("formaldehyde CH2O", "O=C"),
    ("acetone Me2CO", "O=C(C)C"),
    ("acetonitrile MeCN", "N#CC"),
    ("DMSO dimethylsulfoxide", "O=S(C)C"),
]

# The twenty amino acids, neutral (not zwitterionic), L, N-terminus first.
AMINO_ACIDS = [
    ("glycine Gly", "NCC(=O)O"),
    ("alanine Ala", "N[C@@H](C)C(=O)O"),
    ("valine Val", "N[C@@H](C(C)C)C(=O)O"),
    ("leucine Leu", "N[C@@H](CC(C)C)C(=O)O"),
    ("isoleucine Ile", "N[C@@H]([C@@H](C)CC)C(=O)O"),
    ("proline Pro", "N1[C@@H](CCC1)C(=O)O"),
    ("phenylalanine Phe", "N[C@@H](Cc1ccccc1)C(=O)O"),
    ("tyrosine Tyr", "N[C@@H](Cc1ccc(O)cc1)C(=O)O"),
    ("tryptophan Trp", "N[C@@H](Cc1c[nH]c2ccccc12)C(=O)O"),
    ("serine Ser", "N[C@@H](CO)C(=O)O"),
    ("threonine Thr", "N[C@@H]([C@H](O)C)C(=O)O"),
    ("cysteine Cys", "N[C@@H](CS)C(=O)O"),
    ("methionine Met", "N[C@@H](CCSC)C(=O)O"),
    ("asparagine Asn", "N[C@@H](CC(=O)N)C(=O)O"),
    ("glutamine Gln", "N[C@@H](CCC(=O)N)C(=O)O"),
    ("aspartic-acid Asp aspartate", "N[C@@H](CC(=O)O)C(=O)O"),
    ("glutamic-acid Glu glutamate", "N[C@@H](CCC(=O)O)C(=O)O"),
    ("lysine Lys", "N[C@@H](CCCCN)C(=O)O"),
    ("arginine Arg", "N[C@@H](CCCNC(=N)N)C(=O)O"),
    ("histidine His", "N[C@@H](Cc1c[nH]cn1)C(=O)O"),
]


# One thread: a parallel reduction may add in another order from run to run.
ENV = dict(os.environ, OMP_NUM_THREADS="1", MKL_NUM_THREADS="1", OPENBLAS_NUM_THREADS="1",
           FAKETIME_NO_CACHE="1")
# Open Babel's random numbers are seeded by the clock: a stopped clock
# ("x0") gives the same seed, and so the same guess, on every run.
STOPPED_CLOCK = ["faketime", "-f", "2020-01-01 00:00:00 x0"]


def run(cmd, cwd):
    return subprocess.run(cmd, cwd=cwd, check=True, capture_output=True, text=True, env=ENV).stdout


def read_xyz(text):
    lines = text.splitlines()
    n = int(lines[0])
    atoms = []
    for line in lines[2:2 + n]:
        t = line.split()
        atoms.append((t[0], float(t[1]), float(t[2]), float(t[3])))
    return atoms


def bonds_of(xyz_path, cwd):
    """Bonds perceived by Open Babel, as pairs of 0-based atom indices."""
    sdf = run(["obabel", xyz_path, "-osdf"], cwd).splitlines()
    counts = sdf[3]
    n, m = int(counts[0:3]), int(counts[3:6])
    pairs = []
    for line in sdf[4 + n:4 + n + m]:
        pairs.append((int(line[0:3]) - 1, int(line[3:6]) - 1))
    return pairs


def optimised(smiles, cwd):
    guess = run(STOPPED_CLOCK + ["obabel", "-:" + smiles, "-oxyz", "--gen3d", "-h"], cwd)
    with open(os.path.join(cwd, "guess.xyz"), "w") as f:
        f.write(guess)
    electrons = sum({"H": 1, "C": 6, "N": 7, "O": 8, "F": 9, "Si": 14, "S": 16, "Cl": 17,
                     "Br": 35, "I": 53}[a[0]] for a in read_xyz(guess))
    uhf = ["--uhf", "1"] if electrons % 2 else []
    run(["xtb", "guess.xyz", "--opt", "--gfn", "2"] + uhf, cwd)
    with open(os.path.join(cwd, "xtbopt.xyz")) as f:
        atoms = read_xyz(f.read())
    return atoms, bonds_of("xtbopt.xyz", cwd)


def record(names, comment, atoms, pairs, capped):
    """The record in the layout of the program's own writer."""
    order = list(range(len(atoms)))
    if capped:
        cap = 0
        head = next(b if a == cap else a for a, b in pairs if cap in (a, b))
        order = [head] + [i for i in order if i not in (cap, head)]
    number = {old: new + 1 for new, old in enumerate(order)}
    partners = {i: [] for i in order}
    for a, b in pairs:
        if a in number and b in number:
            partners[a].append(number[b])
            partners[b].append(number[a])
    out = ["", "! " + comment, "! -- GFN2-xTB geometry, tools/make_fragment_stock.py --", "# " + names]
    for k, i in enumerate(order):
        symbol, x, y, z = atoms[i]
        bonds = sorted(partners[i]) + [0] * (16 - len(partners[i]))
        out.append(f"{symbol + str(k + 1):<6}{x:12.6f}{y:12.6f}{z:12.6f}" + "".join(f"{b:4d}" for b in bonds))
    return "\n".join(out) + "\n"


def main():
    target = sys.argv[1] if len(sys.argv) > 1 else os.path.join(os.path.dirname(__file__), "..", "data", "Quintor.fdb")
    parts = ["! Quintor fragment database: the shipped stock. Add your own with key G in the Fragment edit mode.\n"]
    table = ([(n, s, True, "substituent " + s) for n, s in SUBSTITUENTS] +
             [(n, s, False, "molecule " + s) for n, s in MOLECULES] +
             [(n, s, False, "amino acid " + s) for n, s in AMINO_ACIDS])
    for names, smiles, capped, comment in table:
        with tempfile.TemporaryDirectory() as cwd:
            atoms, pairs = optimised(smiles, cwd)
        parts.append(record(names, comment, atoms, pairs, capped))
        print(names.split()[0], len(atoms) - capped, "atoms", flush=True)
    with open(target, "w") as f:
        f.write("".join(parts))


if __name__ == "__main__":
    main()
