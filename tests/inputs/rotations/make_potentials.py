#!/usr/bin/python3
"""Rebuilds the MP2 rotation potentials of the experiment table.

For each xtb minimum made by make_inputs.sh, Quintor finds the rotors
(/ARIR) and writes, with GENCOORD and the Psi4 PATTERN examples/psi4_mp2.in,
one input per rotation angle (the default 20-degree step). Each unique point
is relaxed by GFN2-xTB with the torsions of all rotors held (the turned one at
its angle, the others where the minimum has them), then Psi4 (Debian's psi4)
computes its DF-MP2/6-311+G(2df,p) energy, the level of the program's default
GAMESS template. Equivalent points take the energy of the point they name.
The result is a SpecFile <name>_mp2.tdi with one VIBR line and READP block
per rotor.

Why relaxed, and why the other torsions held: a rigid turn pushes the methyl
of ethylbenzene's ethyl into the ortho hydrogens (12.4 kJ/mol at the planar
form against 5.3 relaxed) and overstates methyl barriers by about 1 kJ/mol
(ethane 13.5 against 12.2); letting the other tops follow (neopentane's
methyls gear) would count their coupling in every curve, while the rotors are
treated as a product of one-dimensional ones.

Rotors that Quintor keeps as harmonic vibrations (the =CH2 twist of a double
bond) get no potential.

    tests/inputs/rotations/make_potentials.py build/bin/quintor [name ...]
"""
import concurrent.futures
import math
import os
import re
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
MOLECULES = ["ethane", "propane", "propylene", "isobutane", "neopentane", "aceticacid", "isobutene",
             "ethylbenzene"]
PSI4_TEMPLATE = os.path.join(HERE, "..", "..", "..", "examples", "psi4_mp2.in")
HARTREE_KJ = 2625.4996394799


def rotors(mou):
    """Axis, fold, group and replaced mode of each rotor the run treats."""
    folds = {}  # group -> NRot, from the list of possible rotations
    for m in re.finditer(r"Int\.Rot\.\s+\d+\s+Axis:\s+\d+\s+\d+\s+NRot:\s+(\d+)\s+Atoms:\s+\d+\s+Group:([\d ]+)", mou):
        folds[tuple(m[2].split())] = int(m[1])
    found = {}  # in the final order, which the numbers below follow
    for m in re.finditer(r"Int\.Rot\.\s+(\d+):\s+Top:\s+\S+\s+Axis:\s+(\d+)\s+(\d+)\s+Group:([\d ]+)", mou):
        group = tuple(m[4].split())
        found[int(m[1])] = {"axis": (int(m[2]), int(m[3])), "fold": folds[group], "group": group}
    for m in re.finditer(r"Internal rotation No\.\s+(\d+) \(replacing the vibration mode\s+(\d+)\)", mou):
        found[int(m[1])]["mode"] = int(m[2])
    for m in re.finditer(r"Internal rotation\s+(\d+) \(mode\s+\d+\):.*stays a harmonic vibration", mou):
        found.pop(int(m[1]), None)
    return found


def points(mou):
    """(rotor, angle) -> None for a unique point, or the angle it repeats."""
    result = {}
    pattern = (r"Internal rotation:\s*(\d+)\s+Rotation angle:\s*([-\d.]+)\n"
               r"(?: Unique point\s+:\s*\d+| This point is equivalent to point:\s*\d+ \(angle:\s*([-\d.]+)\))")
    for m in re.finditer(pattern, mou):
        result[(int(m[1]), float(m[2]))] = float(m[3]) if m[3] else None
    return result


def dihedral(p):
    """The dihedral angle of four points, degrees."""
    def sub(u, v): return [u[i] - v[i] for i in range(3)]
    def cross(u, v): return [u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]]
    def dot(u, v): return sum(u[i] * v[i] for i in range(3))
    b0, b1, b2 = sub(p[0], p[1]), sub(p[2], p[1]), sub(p[3], p[2])
    n1, n2 = cross(b0, b1), cross(b1, b2)
    y = dot(cross(n1, n2), b1) / math.sqrt(dot(b1, b1))
    return math.degrees(math.atan2(y, dot(n1, n2)))


def torsion_atoms(rotor, xyz):
    """a-b-c-d: a group atom off the axis, the axis atom in the group, the
    other axis atom and its nearest neighbour outside the group (1-based)."""
    group = [int(g) for g in rotor["group"]]
    b, c = rotor["axis"] if rotor["axis"][0] in group else rotor["axis"][::-1]
    a = next(g for g in group if g != b)
    def distance(i, j): return math.dist(xyz[i - 1], xyz[j - 1])
    d = min((k for k in range(1, len(xyz) + 1) if k not in group and k != c), key=lambda k: distance(c, k))
    return a, b, c, d


def atoms_of(inp):
    """The atom lines of a generated input: (name, [x, y, z]) in angstrom."""
    found = []
    with open(inp) as f:
        for line in f:
            m = re.fullmatch(r"\s*([A-Z][a-z]?\d+)\s+(-?\d+\.\d+)\s+(-?\d+\.\d+)\s+(-?\d+\.\d+)\s*", line)
            if m:
                found.append((m[1], [float(m[2]), float(m[3]), float(m[4])]))
    return found


def relaxed_input(inp, torsions):
    """Relaxes the turned geometry of `inp` by GFN2-xTB with every rotor's
    torsion held, and writes it back into the Psi4 input."""
    atoms = atoms_of(inp)
    work = inp[:-3] + "_relax"
    os.mkdir(work)
    with open(os.path.join(work, "point.xyz"), "w") as f:
        f.write(f"{len(atoms)}\n\n")
        for name, x in atoms:
            f.write(f"{re.match('[A-Z][a-z]?', name)[0]} {x[0]:.6f} {x[1]:.6f} {x[2]:.6f}\n")
    with open(os.path.join(work, "hold.inp"), "w") as f:
        f.write("$constrain\n  force constant=1.0\n")
        f.writelines("  dihedral: %d,%d,%d,%d,auto\n" % t for t in torsions)
        f.write("$end\n")
    subprocess.run(["xtb", "point.xyz", "--opt", "--input", "hold.inp"], cwd=work, check=True,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, env=dict(os.environ, OMP_NUM_THREADS="1"))
    with open(os.path.join(work, "xtbopt.xyz")) as f:
        relaxed = [[float(v) for v in line.split()[1:4]] for line in f.read().splitlines()[2:2 + len(atoms)]]
    for t in torsions:
        before = dihedral([atoms[i - 1][1] for i in t])
        after = dihedral([relaxed[i - 1] for i in t])
        if abs((after - before + 180.0) % 360.0 - 180.0) > 1.0:
            raise RuntimeError(f"{inp}: the held torsion {t} moved from {before:.2f} to {after:.2f} degrees")
    with open(inp) as f:
        text = f.read()
    for (name, x), y in zip(atoms, relaxed):
        text = re.sub(rf"^\s*{name}\s.*$", f" {name:<5}{y[0]:20.6f}{y[1]:12.6f}{y[2]:12.6f}", text, count=1,
                      flags=re.M)
    with open(inp, "w") as f:
        f.write(text)


def mp2_energy(inp):
    out = inp[:-3] + ".psi4out"
    env = dict(os.environ, OMP_NUM_THREADS="1")
    subprocess.run(["psi4", "-n", "1", inp, out], check=True, env=env, stdout=subprocess.DEVNULL,
                   cwd=os.path.dirname(inp))  # Psi4 leaves timer.dat and psi.*.clean there
    with open(out) as f:
        energies = re.findall(r"^\s+Total Energy\s+=\s+(-?\d+\.\d+) \[Eh\]", f.read(), re.M)
    return float(energies[-1])  # the MP2 total, after the SCF one


def relaxed_energy(inp, torsions):
    relaxed_input(inp, torsions)
    return mp2_energy(inp)


def potential_file(quintor, name):
    work = tempfile.mkdtemp()
    try:
        log = name + "_xtb.out"
        shutil.copy(os.path.join(HERE, log), work)
        shutil.copy(PSI4_TEMPLATE, os.path.join(work, "psi4.in"))
        with open(os.path.join(work, "gen.tdi"), "w") as f:
            f.write("PATTERN=psi4.in\nGENCOORD\n")
        subprocess.run([quintor, log, "/0", "/ARIR", "/@gen.tdi"], cwd=work, check=True, stdout=subprocess.DEVNULL)
        with open(os.path.join(work, name + "_xtb.mou")) as f:
            mou = f.read()
        spec = [f"! {name}: rotation potentials, DF-MP2/6-311+G(2df,p)//GFN2-xTB (Psi4, xtb), "
                "each torsion turned with the others held\n"]
        treated = sorted(rotors(mou).items())
        minimum = [x for _, x in atoms_of(os.path.join(work, f"{name}_xtb_u_1_0.in"))]
        torsions = [torsion_atoms(rotor, minimum) for _, rotor in treated]
        for r, rotor in treated:
            grid = {a: rep for (rr, a), rep in points(mou).items() if rr == r}
            if len(grid) != 18:  # the default step, 20 degrees
                raise RuntimeError(f"{name}: rotation {r} has {len(grid)} points in the MainLog")
            unique = [a for a, rep in grid.items() if rep is None]
            with concurrent.futures.ThreadPoolExecutor(max_workers=2) as pool:
                futures = {a: pool.submit(relaxed_energy, os.path.join(work, f"{name}_xtb_u_{r}_{round(a)}.in"),
                                          torsions) for a in unique}
                energy = {a: f.result() for a, f in futures.items()}
            spec.append(f"VIBR={rotor['mode']} ROT={rotor['fold']} GROUP=({','.join(rotor['group'])}) "
                        f"AXIS=({rotor['axis'][0]},{rotor['axis'][1]}) READP KJ\n")
            first = energy[0.0]
            for a in sorted(grid):
                same = a
                while grid[same] is not None:  # a point may name one that names another
                    same = grid[same]
                spec.append(f"{a:6.1f} {(energy[same] - first) * HARTREE_KJ:10.4f}\n")
            spec.append("\n")
        with open(os.path.join(HERE, name + "_mp2.tdi"), "w") as f:
            f.writelines(spec)
    finally:
        shutil.rmtree(work)


if __name__ == "__main__":
    quintor = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else "build/bin/quintor")
    for name in sys.argv[2:] or MOLECULES:
        potential_file(quintor, name)
        print(name, "done", flush=True)
