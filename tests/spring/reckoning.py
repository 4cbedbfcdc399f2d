#!/usr/bin/env python3
"""One set of sizes of each family of springs, reckoned apart from the program and held against the accepted
commands: reckoning.py GOLDEN_FOLDER

The reckoning knows points as complex numbers and nothing of rows, coils and frames: it goes step by step through
each view as it is built up, with the constants of the view, so that a wrong constant, a missing or doubled line, a
wrong layer or another order in the program shows. Sizes: wire 2, coil 20, length 50, five coils, placed at 100,50.
"""
import cmath
import math
import os
import sys

D_WIRE, D_COIL, H0, N = 2.0, 20.0, 50.0, 5
P = complex(100, 50)
PI = math.pi
HATCH_SCALE = 1 / 25.4
LAYERS = {}


def polar(point, bearing, distance):
    return point + cmath.rect(distance, bearing)


def layer(kind):
    return ("LAYER", "M", LAYERS[kind], "")


def line(a, b):
    return ("LINE", a, b, "")


def arc(a, b, r=D_WIRE / 2):
    half = abs(b - a) / 2
    if 0 < half - r < 1e-5:
        r = half
    return ("ARC", a, "E", b, "R", r)


def about(a, center, b):
    return ("ARC", a, "C", center, b)


def circle(center, radius):
    return ("CIRCLE", center, radius)


def hatch(count):
    return ("HATCH", "ANSI31", HATCH_SCALE, 0.0, f"set of {count}", "")


def center_lines(rows):
    over = 0.025 * H0
    lines = [line(P + offset - over, P + offset + H0 + over) for offset in rows]
    return [layer("CENTER"), *lines, layer("THICK")]


ROWS = (0, 1j * D_COIL / 2, -1j * D_COIL / 2)


# --- Compression ---------------------------------------------------------------------------------------------


def compression_points():
    """Lists A, B of the upper row and E, F of the lower one."""
    d, m = D_WIRE, int(N)
    t = (H0 - 1.5 * d) / (N + 0.5)
    q = math.sqrt(3) / 2 * d / 2
    c = polar(P, PI / 2, D_COIL / 2)
    A, B = [polar(c, PI, d / 4)], [polar(c, PI / 2, q)]
    A.append(polar(c, 0, 0.75 * d))
    B.append(polar(A[1], PI / 2, d / 2))
    cursor = A[1]
    for _ in range(m):
        cursor = polar(cursor, 0, t)
        A.append(cursor)
        B.append(polar(cursor, PI / 2, d / 2))
    cursor = polar(cursor, 0, 0.5 * t + 0.5 * d)
    A.append(cursor)
    B.append(polar(polar(cursor, 0, d / 4), PI / 2, q))

    c2 = polar(P, -PI / 2, D_COIL / 2)
    E, F = [polar(c2, 0, d / 4)], [polar(c2, -PI / 2, q)]
    cursor = polar(E[0], 0, (t + d) / 2)
    E.append(cursor)
    F.append(polar(cursor, -PI / 2, q))
    for _ in range(m):
        cursor = polar(cursor, 0, t)
        E.append(cursor)
        F.append(polar(cursor, -PI / 2, q))
    E.append(polar(cursor, 0, d))
    F.append(polar(polar(E[-1], PI, d / 4), -PI / 2, q))
    return t, q, A, B, E, F


def compression_simplified():
    _, _, _, B, _, F = compression_points()
    commands = [layer("THICK")]
    for i in range(len(B)):
        commands.append(line(B[i], F[i]))
        if i + 1 < len(B):
            commands.append(line(F[i], B[i + 1]))
    return commands + center_lines(ROWS)


def compression_full():
    d, D, r = D_WIRE, D_COIL, D_WIRE / 2
    t, q, A, _, E, _ = compression_points()
    last = len(A) - 1
    slant, end_slant = math.atan(t / (2 * D)), math.atan(d / (2 * D))
    c, c2, over = P + 1j * D / 2, P - 1j * D / 2, 1j * q
    commands = [layer("THICK")]
    # Caps, a coil at a time. Arcs run counter-clockwise.
    commands += [arc(polar(A[0], end_slant, r), c + over)]
    commands += [arc(c2 - over, polar(E[0], end_slant, r))]
    for i in range(1, last):
        commands += [arc(polar(A[i], slant, r), polar(A[i], PI + slant, r))]
        commands += [arc(polar(E[i], PI + slant, r), polar(E[i], slant, r))]
    commands += [arc(c + H0 + over, polar(A[last], PI + end_slant, r))]
    commands += [arc(polar(E[last], PI + end_slant, r), c2 + H0 - over)]
    # What shows of the strands behind. The end coils' edges run on until a front strand's flank hides them, all
    # others to the foot by similar triangles.
    drop = 1j * (t - d * math.sqrt(t * t / (4 * D * D) + 1)) * D / t
    behind = (polar(E[0], -end_slant, r), polar(A[1], -end_slant, r))
    commands += [line(behind[0], crossing(behind, (polar(A[1], PI + slant, r), polar(E[1], PI + slant, r))))]
    for i in range(1, last - 1):
        commands += [line(polar(A[i + 1], PI - slant, r), A[i + 1] - t / 2 - drop)]
        commands += [line(polar(E[i], -slant, r), E[i] + t / 2 + drop)]
    k = last - 1
    behind = (polar(A[last], PI - end_slant, r), polar(E[k], PI - end_slant, r))
    commands += [line(behind[0], crossing(behind, (polar(A[k], slant, r), polar(E[k], slant, r))))]
    # Flanks.
    commands += [line(c + over, c2 - over), line(polar(A[0], end_slant, r), polar(E[0], end_slant, r))]
    for i in range(1, last):
        commands += [line(polar(A[i], PI + slant, r), polar(E[i], PI + slant, r))]
        commands += [line(polar(A[i], slant, r), polar(E[i], slant, r))]
    commands += [line(polar(A[last], PI + end_slant, r), polar(E[last], PI + end_slant, r))]
    commands += [line(c + H0 + over, c2 + H0 - over)]
    return commands + center_lines(ROWS)


def compression_section():
    d, D, r = D_WIRE, D_COIL, D_WIRE / 2
    t, q, A, _, E, _ = compression_points()
    last = len(A) - 1
    slant, end_slant = math.atan(t / (2 * D)), math.atan(d / (2 * D))
    c, c2, over = P + 1j * D / 2, P - 1j * D / 2, 1j * q
    commands = [layer("THICK")]
    # The strands behind, from the lower row up to the next coil; the end planes cut the outer edges.
    for i in range(last):
        s = end_slant if i in (0, last - 1) else slant
        left = [polar(E[i], PI - s, r), polar(A[i + 1], PI - s, r)]
        right = [polar(E[i], -s, r), polar(A[i + 1], -s, r)]
        if i == 0:
            left[0] = crossing(left, (c, c2))
        if i == last - 1:
            right[1] = crossing(right, (c + H0, c2 + H0))
        commands += [line(*left), line(*right)]
    upper = [arc(c - over, c + over), line(c - over, c + over)]
    upper += [circle(A[i], r) for i in range(1, last)]
    back = A[last] - r
    upper += [arc(c + H0 + over, back), arc(back, c + H0 - over), line(c + H0 - over, c + H0 + over)]
    front = E[0] + r
    lower = [arc(c2 - over, front), arc(front, c2 + over), line(c2 - over, c2 + over)]
    lower += [circle(E[i], r) for i in range(1, last)]
    lower += [arc(c2 + H0 + over, c2 + H0 - over), line(c2 + H0 - over, c2 + H0 + over)]
    commands += upper + lower + center_lines(ROWS)
    commands += [layer("HATCH"), hatch(len(upper)), hatch(len(lower)), layer("THICK")]
    # The end planes between the sections, seen behind.
    return commands + [line(c - over, c2 + over), line(c + H0 - over, c2 + H0 + over)]


def crossing(first, second):
    """Where the lines through two pairs of points cross."""
    (a, b), (c, d) = first, second
    u, v, w = b - a, d - c, c - a
    determinant = (u.conjugate() * v).imag
    return a + u * ((w.conjugate() * v).imag / determinant)


# --- Extension -----------------------------------------------------------------------------------------------


def extension_simplified():
    d, D = D_WIRE, D_COIL
    t = (H0 - 2 * D + d) / N
    m = int(N)
    start = P + D - d + d / 2 + t / 4
    lower = [start - 1j * D / 2 + i * t for i in range(m)]
    upper = [lower[0] + t / 2 + 1j * D + i * t for i in range(m)]
    commands = [layer("THICK")]
    for i in range(m):
        commands.append(line(lower[i], upper[i]))
        if i + 1 < m:
            commands.append(line(upper[i], lower[i + 1]))
    R = D / 2
    left = [P + (D - d) / 2, P + D - d + d / 2, lower[0]]
    for turned in (False, True):
        show = (lambda z: 2 * P + H0 - z) if turned else (lambda z: z)
        center, body = left[0], left[1]
        # Half a turn of wire, open towards the body.
        commands.append(about(show(polar(center, math.radians(110), R)), show(center), show(polar(center, math.radians(-70), R))))
        # The wire leaves it on an arc that touches it from inside and goes on straight to the middle of the body's end.
        inner = polar(center, math.radians(-70), 0.625 * R)
        r = 0.375 * R
        reach = abs(body - inner)
        tangent = math.acos(r / reach)
        touching = polar(inner, cmath.phase(body - inner) - tangent, r)
        commands.append(about(show(polar(center, math.radians(-70), R)), show(inner), show(touching)))
        commands.append(line(show(touching), show(body)))
        commands.append(line(show(body), upper[-1] if turned else lower[0]))
    return commands + center_lines((0,))


# --- Torsion -------------------------------------------------------------------------------------------------


def torsion_simplified():
    d, D, m = D_WIRE, D_COIL, int(N)
    t = d + 0.5
    upper = [P + 1j * D / 2 + d / 2 + i * t for i in range(m)]
    lower = [P - 1j * D / 2 + d + i * t for i in range(m)]
    commands = [layer("THICK")]
    for i in range(m):
        commands.append(line(upper[i], lower[i]))
        if i + 1 < m:
            commands.append(line(lower[i], upper[i + 1]))
    return commands + center_lines((0,))


def torsion_end_view():
    center, mean, d, a, L1, L2 = 0j, 20.0, 2.0, 1.2, 30.0, 25.0
    inner, outer = (mean - d) / 2, (mean + d) / 2
    w = math.sqrt((mean + d) ** 2 - (mean - d) ** 2) / 2
    A1 = polar(center, -PI / 2, outer)
    A2 = polar(A1, PI, L1)
    A3 = polar(A2, PI / 2, d)
    A4 = polar(A3, 0, L1 - w)
    B1, B2 = polar(center, PI / 2 - a, outer), polar(center, PI / 2 - a, inner)
    B3, B4, B5 = polar(B2, PI - a, w), polar(B2, PI - a, L2), polar(B1, PI - a, L2)
    reach = 1.2 * outer
    return [
        layer("THICK"), circle(center, inner),
        line(A2, A1), line(A2, A3), line(A3, A4),
        about(A1, center, B1),
        line(B5, B1), line(B5, B4), line(B4, B3),
        layer("CENTER"), line(center - reach, center + reach), line(center - 1j * reach, center + 1j * reach),
        layer("THICK"),
    ]


# --- Standard form -------------------------------------------------------------------------------------------


def standard_form():
    d, r = D_WIRE, D_WIRE / 2
    mean = D_COIL - d
    t = d + 5.0
    lean = mean * math.tan(0.17453292519943295)
    reach = d / 2 + 3.0
    row, q = 1j * mean / 2, 1j * math.sqrt(3) / 2 * r
    commands = [layer("THICK"), layer("CENTER")]
    commands += [line(P + y - reach, P + y + H0 + reach) for y in (0, row, -row)]
    commands += [layer("THICK")]
    # Wire centres of the end coil and the next one, and of the one that is cut.
    up = [P + row - d / 4, P + row + 0.75 * d]
    low = [P - row + d / 4, P - row + 0.75 * d + lean]
    cut = [up[1] + t, up[1] + t - 2 * row]
    slants = [cmath.phase(u - l) for u, l in zip(up, low)]
    side = [cmath.rect(r, s - PI / 2) for s in slants]  # from a strand's middle to its right edge
    for turned in (False, True):
        show = (lambda z: 2 * P + H0 - z) if turned else (lambda z: z)

        def laid(a, b, gone=None, along=None):
            """A line; with `along`, the part from `gone` to where it crosses that edge is trimmed away."""
            commands.append(line(show(a), show(b)))
            if along:
                middle = (crossing((a, b), along) + gone) / 2
                commands.append(("trim", "set of 1", "", 5016, 5006, show(middle), 5017, ""))

        left = [(u - s, l - s) for u, l, s in zip(up, low, side)]
        right = [(u + s, l + s) for u, l, s in zip(up, low, side)]
        commands.append(arc(show(right[0][0]), show(P + row + q)))
        laid(P + row + q, P - row - q)
        commands.append(arc(show(P - row - q), show(right[0][1])))
        laid(*right[0])
        laid(*left[1])
        commands.append(arc(show(right[1][0]), show(left[1][0])))
        commands.append(arc(show(left[1][1]), show(right[1][1])))
        laid(*right[1])
        # Behind: the end coil's right edge goes under the second coil, the second coil's left edge comes from it.
        off = cmath.rect(r, cmath.phase(up[1] - low[0]) - PI / 2)
        laid(low[0] + off, up[1] + off, up[1] + off, left[1])
        off = cmath.rect(r, cmath.phase(cut[0] - low[1]) - PI / 2)
        laid(low[1] - off, cut[0] - off, low[1] - off, right[1])
        laid(low[1] + off, cut[0] + off)
    commands += [layer("HATCH"), hatch(1), hatch(1), layer("THICK")]
    # Three centre lines, for each end four arcs, seven lines and the cut circle, two hatches.
    commands += [("BLOCK", "KM_SPRING", P, f"set of {3 + 2 * 12 + 2}", "")]
    commands += [("INSERT", "KM_SPRING", "\\", "", "", ""), ("ERASE", "L", ""), ("INSERT", "KM_SPRING", "@0<0", "", "", "\\")]
    return commands


# --- Comparing -----------------------------------------------------------------------------------------------

REAL, POINT2, ANGLE, POINT3 = "5001", "5002", "5004", "5009"
VIEWS = {
    "DrawCompSpring1": compression_full,
    "DrawCompSpring3": compression_section,
    "DrawCompSpring5": compression_simplified,
    "DrawExteSpring5": extension_simplified,
    "DrawTorSpring5": torsion_simplified,
    "DrawLeftTorSpring": torsion_end_view,
    "GB1239_YI_1": standard_form,
}


def same(wanted, text):
    """Whether an accepted line is the reckoned command: the same texts and codes, numbers to 1e-6."""
    point_kind = POINT3 if wanted[0] == "CIRCLE" or wanted[2] == "E" else POINT2
    given = text.split(", ")
    if len(given) != len(wanted):
        return False
    for position, (argument, shown) in enumerate(zip(wanted, given)):
        code, *numbers = shown.split()
        if isinstance(argument, complex):
            if code != point_kind or len(numbers) != (3 if code == POINT3 else 2):
                return False
            values = [float(n) for n in numbers] + [0.0]
            if abs(complex(values[0], values[1]) - argument) > 1e-6 or (code == POINT3 and values[2] != 0):
                return False
        elif isinstance(argument, float):
            kind = ANGLE if wanted[0] == "HATCH" and position == 3 else REAL
            if code != kind or abs(float(numbers[0]) - argument) > 1e-6:
                return False
        elif isinstance(argument, int):
            if shown != str(argument):
                return False
        elif shown != (argument if argument.startswith("set of") else f'"{argument}"'):
            return False
    return True


def main():
    folder = sys.argv[1]
    LAYERS.update(THICK="GB 粗实线", CENTER="GB 点画线", HATCH="GB 剖面符号")
    wrong = 0
    for name, view in VIEWS.items():
        with open(os.path.join(folder, name + ".txt"), encoding="utf-8") as file:
            accepted = file.read().splitlines()
        wanted = view()
        # The first set of sizes stands first; what follows it begins with the layer of outlines again.
        for number, command in enumerate(wanted, 1):
            given = accepted[number - 1] if number <= len(accepted) else "nothing"
            if not same(command, given):
                print(f"{name}, command {number}: reckoned {command}, accepted {given}")
                wrong += 1
                break
        else:
            following = accepted[len(wanted)] if len(accepted) > len(wanted) else "nothing"
            if not same(layer("THICK"), following):
                print(f"{name}: {len(wanted)} commands reckoned, but then comes {following}")
                wrong += 1
    print(f"{len(VIEWS)} views reckoned, {wrong} differ")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
