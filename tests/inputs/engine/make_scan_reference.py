#!/usr/bin/env python3
# MOPAC 22's rigid barrier of ethane (tests/inputs/rotations/ethane_xtb.out):
# 1SCF at the staggered geometry and with one methyl group turned by 60
# degrees about the C-C axis. Writes mopac_scan.txt; run from this folder.
import math, re, subprocess, tempfile, os

here = os.path.dirname(os.path.abspath(__file__))
txt = open(os.path.join(here, '..', 'rotations', 'ethane_xtb.out')).read()
rows = txt.split('orientation:')[-1].split('\n')[5:]
atoms = []
for l in rows:
    if '-----' in l:
        break
    w = l.split()
    atoms.append((int(w[1]), [float(w[3]), float(w[4]), float(w[5])]))
c1, c2 = [i for i, (z, _) in enumerate(atoms) if z == 6]
top = [i for i, (z, x) in enumerate(atoms) if z == 1 and math.dist(x, atoms[c1][1]) < 1.3]

def turned(p, a, b, ang):
    ax = [b[i] - a[i] for i in range(3)]
    n = math.sqrt(sum(x * x for x in ax))
    ax = [x / n for x in ax]
    v = [p[i] - a[i] for i in range(3)]
    c, s = math.cos(ang), math.sin(ang)
    dot = sum(ax[i] * v[i] for i in range(3))
    cr = [ax[1] * v[2] - ax[2] * v[1], ax[2] * v[0] - ax[0] * v[2], ax[0] * v[1] - ax[1] * v[0]]
    return [a[i] + v[i] * c + cr[i] * s + ax[i] * dot * (1 - c) for i in range(3)]

out = open(os.path.join(here, 'mopac_scan.txt'), 'w')
out.write('# molecule method barrier (kJ/mol): E(60 deg) - E(0 deg), mopac <METHOD> 1SCF; made by make_scan_reference.py\n')
with tempfile.TemporaryDirectory() as work:
    for method in ('MNDO', 'AM1', 'PM3'):
        heat = {}
        for deg in (0, 60):
            geo = [list(x) for _, x in atoms]
            for h in top:
                geo[h] = turned(geo[h], atoms[c1][1], atoms[c2][1], math.radians(deg))
            name = os.path.join(work, f'e{deg}.mop')
            with open(name, 'w') as f:
                f.write(f'{method} 1SCF\nethane {deg}\n\n')
                for (z, _), x in zip(atoms, geo):
                    f.write(f"{'C' if z == 6 else 'H'} {x[0]:.8f} 1 {x[1]:.8f} 1 {x[2]:.8f} 1\n")
            subprocess.run(['mopac', name], capture_output=True, check=True)
            m = re.search(r'FINAL HEAT OF FORMATION =\s+\S+ KCAL/MOL\s*=\s*(-?[\d.]+) KJ/MOL',
                          open(name[:-4] + '.out').read())
            heat[deg] = float(m.group(1))
        out.write(f'ethane {method} {heat[60] - heat[0]:.5f}\n')
