#!/usr/bin/env python3
"""One small molecule per element and method against MOPAC 22.

For every element that has built-in parameters under MNDO, AM1, PM3 or MNDO/d
(the rows of Source/engine/builtin_parameters.cpp), writes the molecule's
geometry to geometries/el_<symbol>.xyz and MOPAC's heat of formation
("<METHOD> 1SCF" at that geometry) to mopac_elements.txt. The molecule is the
closed-shell hydride of the element's group (LiH, BeH2, BH3, CH4, NH3, H2O,
HF, ...), or for a noble gas the atom 3 A from the hydrogen of HF.
Needs MOPAC 22 (/usr/bin/mopac). Run from this directory.
"""
import math
import os
import re
import subprocess
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
BUILTIN = os.path.join(HERE, "..", "..", "..", "Source", "engine", "builtin_parameters.cpp")

SYMBOLS = ("H He Li Be B C N O F Ne Na Mg Al Si P S Cl Ar K Ca Sc Ti V Cr Mn Fe Co Ni Cu Zn Ga Ge As Se Br Kr "
           "Rb Sr Y Zr Nb Mo Tc Ru Rh Pd Ag Cd In Sn Sb Te I Xe Cs Ba La Ce Pr Nd Pm Sm Eu Gd Tb Dy Ho Er Tm Yb "
           "Lu Hf Ta W Re Os Ir Pt Au Hg Tl Pb Bi Po At Rn").split()
# Single-bond covalent radii (Pyykko and Atsumi, 2009), angstrom.
RADIUS = {1: .32, 2: .46, 3: 1.33, 4: 1.02, 5: .85, 6: .75, 7: .71, 8: .63, 9: .64, 10: .67, 11: 1.55, 12: 1.39,
          13: 1.26, 14: 1.16, 15: 1.11, 16: 1.03, 17: .99, 18: .96, 19: 1.96, 20: 1.71, 30: 1.18, 31: 1.24,
          32: 1.21, 33: 1.21, 34: 1.16, 35: 1.14, 36: 1.17, 37: 2.10, 38: 1.85, 48: 1.36, 49: 1.42, 50: 1.40,
          51: 1.40, 52: 1.36, 53: 1.33, 54: 1.31, 55: 2.32, 56: 1.96, 80: 1.33, 81: 1.44, 82: 1.44, 83: 1.51}
GROUP = {}
for g, zs in {1: (3, 11, 19, 37, 55), 2: (4, 12, 20, 38, 56, 30, 48, 80), 13: (5, 13, 31, 49, 81),
              14: (6, 14, 32, 50, 82), 15: (7, 15, 33, 51, 83), 16: (8, 16, 34, 52), 17: (9, 17, 35, 53),
              18: (2, 10, 18, 36, 54)}.items():
    for z in zs:
        GROUP[z] = g
MOPAC_NAME = {"MNDO": "MNDO", "AM1": "AM1", "PM3": "PM3", "MNDOD": "MNDOD"}


def hydride(z):
    """Atoms (symbol, x, y, z) of the element's test molecule."""
    s = SYMBOLS[z - 1]
    if z == 1:
        return [("H", 0, 0, 0), ("H", 0, 0, 0.74)]
    g = GROUP[z]
    d = RADIUS[z] + RADIUS[1]
    if g == 18:
        return [(s, 0, 0, 0), ("H", 0, 0, 3.0), ("F", 0, 0, 3.92)]
    atoms = [(s, 0, 0, 0)]
    if g in (1, 17):
        dirs = [(0, 0, 1)]
    elif g == 2:
        dirs = [(0, 0, 1), (0, 0, -1)]
    elif g == 13:
        dirs = [(math.cos(a), math.sin(a), 0) for a in (0, 2 * math.pi / 3, 4 * math.pi / 3)]
    elif g == 14:
        c = 1 / math.sqrt(3)
        dirs = [(c, c, c), (c, -c, -c), (-c, c, -c), (-c, -c, c)]
    elif g == 15:  # pyramid, H-X-H about 100 degrees
        t = math.radians(60)
        dirs = [(math.sin(t) * math.cos(a), math.sin(t) * math.sin(a), -math.cos(t))
                for a in (0, 2 * math.pi / 3, 4 * math.pi / 3)]
    else:  # 16: bent, 100 degrees
        h = math.radians(50)
        dirs = [(math.sin(h), math.cos(h), 0), (-math.sin(h), math.cos(h), 0)]
    for v in dirs:
        atoms.append(("H", d * v[0], d * v[1], d * v[2]))
    return atoms


def elements_by_method():
    rows = re.findall(r'\{"(\w+)", "USS", (\d+), 0,', open(BUILTIN).read())
    out = {}
    for section, z in rows:
        out.setdefault(section, []).append(int(z))
    return out


def heat(keywords, atoms, work):
    with open(os.path.join(work, "job.mop"), "w") as f:
        f.write(f"{keywords}\nreference\n\n")
        for a in atoms:
            f.write(f"{a[0]} {a[1]:.6f} {a[2]:.6f} {a[3]:.6f}\n")
    subprocess.run(["mopac", "job.mop"], cwd=work, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    text = open(os.path.join(work, "job.out")).read()
    m = re.findall(r"FINAL HEAT OF FORMATION =\s+(-?[\d.]+)", text)
    return m[-1] if m else None


def main():
    os.chdir(HERE)
    os.makedirs("geometries", exist_ok=True)
    version = subprocess.run(["mopac", "--version"], capture_output=True, text=True).stdout.strip().splitlines()
    lines = [f"# name method heat_kcal_per_mol   (mopac <METHOD> 1SCF; {version[0] if version else 'MOPAC'})"]
    with tempfile.TemporaryDirectory() as work:
        for method, zs in elements_by_method().items():
            if method not in MOPAC_NAME:
                continue
            for z in zs:
                if z not in GROUP and z != 1:
                    continue
                name = "el_" + SYMBOLS[z - 1]
                atoms = hydride(z)
                with open(os.path.join("geometries", name + ".xyz"), "w") as f:
                    f.write(f"{len(atoms)}\n{name}\n")
                    for a in atoms:
                        f.write(f"{a[0]:<2} {a[1]:12.6f} {a[2]:12.6f} {a[3]:12.6f}\n")
                h = heat(MOPAC_NAME[method] + " 1SCF", atoms, work)
                lines.append(f"{name} {method} {h if h is not None else 'none'}")
    with open("mopac_elements.txt", "w") as f:
        f.write("\n".join(lines) + "\n")


if __name__ == "__main__":
    main()
