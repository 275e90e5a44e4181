"""The library beside strong programs for the same job, on one core, at equal accuracy, timed in turn.

usage: compare.py LIBRARY [disc] [rectangle] [bowl] [heat]

Fields: 1 MHz in water, lossless, the plane y = 0 with 200 x 400 points from 0.4 mm before the face (the bowl: its rim)
on. Each program uses the fewest nodes with which its largest error over the plane stays below a bound, in parts of the
largest pressure. Times are processor time of whole calls.
"""

import ctypes
import os
import platform
import sys
import time

import numba
import numpy as np
import scipy
import scipy.fft

rho_c, k = 1000.0 * 1500.0, 2 * np.pi * 1e6 / 1500
bounds = (1e-2, 1e-4)
turns = 9
step, columns, rows = 0.2e-3, 200, 400
x_all = (np.arange(columns) - (columns - 1) / 2) * step

# Polynomials for sine and cosine on [-pi/2, pi/2], good to rounding, so that LLVM has loops without calls.
_u = np.polynomial.Chebyshev.interpolate
S0, S1, S2, S3, S4, S5, S6, S7 = (
    _u(lambda u: np.sinc(np.sqrt(u) / np.pi), 7, [0, np.pi**2 / 4]).convert(kind=np.polynomial.Polynomial).coef)
C0, C1, C2, C3, C4, C5, C6, C7, C8 = (
    _u(lambda u: np.cos(np.sqrt(u)), 8, [0, np.pi**2 / 4]).convert(kind=np.polynomial.Polynomial).coef)

fast = numba.njit(fastmath=True, error_model="numpy", boundscheck=False)


@numba.njit(fastmath=True, error_model="numpy", inline="always")
def cosine_sine(phase):
    turn = np.rint(phase * (1 / np.pi))
    r = phase - turn * np.pi
    u = r * r
    sign = 1 - 2 * (turn - 2 * np.floor(0.5 * turn))
    s = r * (S0 + u * (S1 + u * (S2 + u * (S3 + u * (S4 + u * (S5 + u * (S6 + u * S7)))))))
    c = C0 + u * (C1 + u * (C2 + u * (C3 + u * (C4 + u * (C5 + u * (C6 + u * (C7 + u * C8)))))))
    return sign * c, sign * s


# ---- Rayleigh sums: p = j rho c k / (2 pi) sum of w e^(-jkR) / R, the half of the face with y > 0 counted twice ----

@fast
def rayleigh_numba(x, z, xs, y2, zs, w, re, im):
    for column in range(len(x)):
        a, b = re[column], im[column]
        for node in range(len(w)):
            d2, source, weight = (x[column] - xs[node])**2 + y2[node], zs[node], w[node]
            for row in range(len(z)):
                h = z[row] - source
                distance = np.sqrt(d2 + h * h)
                c, s = cosine_sine(k * distance)
                a[row] += weight * s / distance
                b[row] += weight * c / distance


def rayleigh_numpy(x, z, xs, y2, zs, w, re, im):
    chunk = max(1, 16384 // len(w))  # of points, so that what they need stays in the cache
    for column in range(len(x)):
        d2 = (x[column] - xs)**2 + y2
        for first in range(0, len(z), chunk):
            rows = slice(first, first + chunk)
            distance = np.sqrt((z[rows, None] - zs)**2 + d2)
            phase = k * distance
            amplitude = w / distance
            re[column, rows] += np.einsum("ij,ij->i", amplitude, np.sin(phase))
            im[column, rows] += np.einsum("ij,ij->i", amplitude, np.cos(phase))


def nodes_of(face, n, m):
    """n Gauss nodes across (radius, polar angle, width), m around or along: midpoints of a half turn, Gauss nodes."""
    t, wt = np.polynomial.legendre.leggauss(n)
    name, size, other = face
    if name == "rectangle":
        s, ws = np.polynomial.legendre.leggauss(2 * (m // 2))  # an even rule, its upper half
        upper = s > 0
        xs, ys = np.meshgrid(t * size / 2, s[upper] * other / 2, indexing="ij")
        w = np.outer(wt * size / 2, 2 * ws[upper] * other / 2)
        zs = np.zeros_like(xs)
    else:
        phi = (np.arange(m) + 0.5) * np.pi / m
        if name == "disc":
            radius, height, ring = (t + 1) / 2 * size, np.zeros(n), wt / 2 * size * (t + 1) / 2 * size
        else:
            angle = (t + 1) / 2 * np.arcsin(size / other)
            radius, height = other * np.sin(angle), other * (1 - np.cos(angle))
            ring = wt / 2 * np.arcsin(size / other) * other * radius
        xs, ys = np.outer(radius, np.cos(phi)), np.outer(radius, np.sin(phi))
        zs, w = np.outer(height, np.ones(m)), np.outer(ring, np.full(m, 2 * np.pi / m))
    flat = [np.ascontiguousarray(v.ravel()) for v in (xs, ys**2, zs, w * rho_c * k / (2 * np.pi))]
    return flat


# ---- The fast nearest method: rim and edge integrals of E(R) less the wave E of the foot, E(d) = e^(-jkd) ----

@fast
def nearest_disc(x, z, a, cosine, w, re, im):
    for column in range(len(x)):
        p, q, r, sum_w = re[column], im[column], abs(x[column]), 0.0
        for i in range(len(w)):
            d = r * r + a * a - 2 * a * r * cosine[i]
            weight = rho_c * a / np.pi * w[i] * (r * cosine[i] - a) / d
            sum_w += weight
            for row in range(len(z)):
                c, s = cosine_sine(k * np.sqrt(z[row] * z[row] + d))
                p[row] += weight * c
                q[row] -= weight * s
        for row in range(len(z)):
            c, s = cosine_sine(k * z[row])
            p[row] -= sum_w * c
            q[row] += sum_w * s


@fast
def nearest_disc_points(x, z, a, cosine, w, re, im):  # of points anywhere, in blocks of 256
    r, z2, sum_w = np.empty(256), np.empty(256), np.empty(256)
    for first in range(0, len(x), 256):
        count = min(256, len(x) - first)
        p, q = re[first:first + count], im[first:first + count]
        for j in range(count):
            r[j], z2[j], sum_w[j] = abs(x[first + j]), z[first + j]**2, 0
        for i in range(len(w)):
            ci, wi = cosine[i], rho_c * a / np.pi * w[i]
            for j in range(count):
                d = r[j] * r[j] + a * a - 2 * a * ci * r[j]
                weight = wi * (r[j] * ci - a) / d
                c, s = cosine_sine(k * np.sqrt(z2[j] + d))
                sum_w[j] += weight
                p[j] += weight * c
                q[j] -= weight * s
        for j in range(count):
            c, s = cosine_sine(k * z[first + j])
            p[j] -= sum_w[j] * c
            q[j] += sum_w[j] * s


@fast
def add_edge(z, distance, start, end, twice, t, w, p, q):
    """Of the part of an edge between two places along it; returns the sum of the weights."""
    half, middle, sum_w = (end - start) / 2, (end + start) / 2, 0.0
    for i in range(len(w)):
        u = middle + half * t[i]
        d = distance * distance + u * u
        weight = -rho_c / (2 * np.pi) * twice * half * w[i] * distance / d
        sum_w += weight
        for row in range(len(z)):
            c, s = cosine_sine(k * np.sqrt(z[row] * z[row] + d))
            p[row] += weight * c
            q[row] -= weight * s
    return sum_w


@fast
def nearest_rectangle(x, z, width, height, t, w, re, im):  # mirror images across y = 0 are computed once
    for column in range(len(x)):
        p, q, foot, sum_w = re[column], im[column], x[column], 0.0
        sum_w += add_edge(z, width / 2 - foot, 0, height / 2, 2, t, w, p, q)
        sum_w += add_edge(z, width / 2 + foot, 0, height / 2, 2, t, w, p, q)
        if abs(foot) < width / 2:
            sum_w += add_edge(z, height / 2, -width / 2 - foot, 0, 2, t, w, p, q)
            sum_w += add_edge(z, height / 2, 0, width / 2 - foot, 2, t, w, p, q)
        else:
            sum_w += add_edge(z, height / 2, -width / 2 - foot, width / 2 - foot, 2, t, w, p, q)
        for row in range(len(z)):
            c, s = cosine_sine(k * z[row])
            p[row] -= sum_w * c
            q[row] += sum_w * s


@fast
def nearest_bowl(x, z, a, roc, cosine, w, re, im):
    h, sum_w = np.sqrt(roc * roc - a * a), np.zeros(len(z))
    for column in range(len(x)):
        p, q, r = re[column], im[column], abs(x[column])
        sum_w[:] = 0
        for i in range(len(w)):
            ci, wi = cosine[i], rho_c * a * roc / np.pi * w[i]
            for row in range(len(z)):
                f = z[row] - roc
                below = 2 * a * h * f * r * ci + r * r * roc * roc - r * r * a * a * ci * ci + a * a * f * f
                weight = wi * (r * h * ci + a * f) / below
                c, s = cosine_sine(k * np.sqrt(roc * roc + r * r + f * f - 2 * a * r * ci + 2 * f * h))
                sum_w[row] += weight
                p[row] += weight * c
                q[row] -= weight * s
        for row in range(len(z)):
            f = z[row] - roc
            centre = np.sqrt(r * r + f * f)
            c, s = cosine_sine(k * (roc + (centre if f > 0 else -centre)))
            p[row] -= sum_w[row] * c
            q[row] += sum_w[row] * s


class Field:
    """A face and the plane before it; every program fills re and im of shape (columns, rows), or their transposes."""

    def __init__(self, library, face):
        self.library, self.face = library, face
        name, size, other = face
        depth = other - np.sqrt(other * other - size * size) if name == "bowl" else 0.0
        self.z = depth + 0.4e-3 + np.arange(rows) * step
        # The dear Rayleigh sums are timed and judged on every eighth column and those above the rim.
        rim = size / 2 if name == "rectangle" else size
        some = {int(np.argmin(abs(x_all - rim))), int(np.argmin(abs(x_all + rim)))}
        self.some = np.array(sorted(some | set(range(4, columns, 8))))
        self.reference = self.kesto(600)
        self.peak = abs(self.reference).max()

    def kesto(self, n):
        name, size, other = self.face
        re, im = np.zeros((rows, columns)), np.zeros((rows, columns))
        x = (ctypes.c_double * 3)(x_all[0], x_all[-1] + step / 100, step)
        z = (ctypes.c_double * 3)(self.z[0], self.z[-1] + step / 100, step)
        points = self.library.kesto_field(name.encode(), ctypes.c_double(size), ctypes.c_double(other), n, x, z,
                                          re.ctypes.data_as(ctypes.c_void_p), im.ctypes.data_as(ctypes.c_void_p))
        assert points == rows * columns, points
        return (re + 1j * im).T

    def kesto_time(self, n):
        name, size, other = self.face
        re, im = np.zeros((rows, columns)), np.zeros((rows, columns))
        x = (ctypes.c_double * 3)(x_all[0], x_all[-1] + step / 100, step)
        z = (ctypes.c_double * 3)(self.z[0], self.z[-1] + step / 100, step)
        arguments = (name.encode(), ctypes.c_double(size), ctypes.c_double(other), n, x, z,
                     re.ctypes.data_as(ctypes.c_void_p), im.ctypes.data_as(ctypes.c_void_p))
        return seconds(lambda: self.library.kesto_field(*arguments))

    def nearest(self, n, points=False):
        """The fast nearest method in Numba: a call that fills, and the buffers."""
        name, size, other = self.face
        re, im = np.zeros((columns, rows)), np.zeros((columns, rows))
        t, w = np.polynomial.legendre.leggauss(n)
        rim = np.cos((t + 1) * np.pi / 2), w * np.pi / 2
        if points:
            x, z = np.repeat(x_all, rows), np.tile(self.z, columns)
            return (lambda: nearest_disc_points(x, z, size, *rim, re.ravel(), im.ravel())), re, im
        if name == "disc":
            return (lambda: nearest_disc(x_all, self.z, size, *rim, re, im)), re, im
        if name == "rectangle":
            return (lambda: nearest_rectangle(x_all, self.z, size, other, t, w, re, im)), re, im
        return (lambda: nearest_bowl(x_all, self.z, size, other, *rim, re, im)), re, im

    def rayleigh(self, method, n, m):
        re, im = np.zeros((len(self.some), rows)), np.zeros((len(self.some), rows))
        nodes = nodes_of(self.face, n, m)
        return (lambda: method(x_all[self.some], self.z, *nodes, re, im)), re, im

    def error(self, program, some=False):
        call, re, im = program
        re[:], im[:] = 0, 0
        call()
        return abs(re + 1j * im - (self.reference[self.some] if some else self.reference)).max() / self.peak


def seconds(call):
    start = time.thread_time()
    call()
    return time.thread_time() - start


def smallest(holds, n, limit=2000):
    """The smallest number from which on `holds`, taken to be monotonous beyond n."""
    low = n
    while not holds(n):
        low, n = n, n * 2
        if n > limit:
            raise RuntimeError("does not converge")
    while n - low > 1:
        middle = (low + n) // 2
        low, n = (low, middle) if holds(middle) else (middle, n)
    return n


def table(rows_of, programs, scale):
    """Times the programs in turn. Ratios are to the first one, the library."""
    times = {name: [] for name, *_ in programs}
    for name, run, *_ in programs:
        run()  # compiled, and in the cache
    for _ in range(turns):
        for name, run, *_ in programs:
            times[name].append(run())
    ours = np.array(times[programs[0][0]])
    for name, _, detail, error in programs:
        t = np.array(times[name])
        ratio = np.median(t / ours)
        print(f"| {rows_of} | {name} | {detail} | {error:.1e} | {np.median(t) * scale:.3g} | "
              f"{t.min() * scale:.3g} to {t.max() * scale:.3g} | {ratio:.3g} |", flush=True)


def compare_fields(library, face):
    field = Field(library, face)
    name = face[0]

    def kesto_error(n):
        return abs(field.kesto(n) - field.reference).max() / field.peak

    check = field.error(field.nearest(400)), field.error(field.rayleigh(rayleigh_numba, 150, 300), True)
    print(f"{name}: with many nodes the Numba programs are off the library's field by {check[0]:.0e} (fast nearest "
          f"method) and {check[1]:.0e} (Rayleigh sum) of the peak", file=sys.stderr, flush=True)
    assert max(check) < 1e-5, check
    for bound in bounds:
        n = smallest(lambda n: kesto_error(n) <= bound, 2)
        programs = [("KESTO `fnm_cw`", lambda: field.kesto_time(n), f"n = {n}", kesto_error(n))]
        forms = [("fast nearest method, Numba, columns of the plane", False)]
        if name == "disc":
            forms.append(("fast nearest method, Numba, any points", True))
        for title, points in forms:
            count = smallest(lambda n: field.error(field.nearest(n, points)) <= bound, 2)
            program = field.nearest(count, points)
            error = field.error(program)
            programs.append((title, lambda program=program: seconds(program[0]), f"n = {count}", error))

        def sum_error(n, m):
            return field.error(field.rayleigh(rayleigh_numba, n, m), True)

        across = smallest(lambda n: sum_error(n, 400) <= 0.9 * bound, 4)
        around = smallest(lambda m: sum_error(across, m) <= bound, 4)
        part = columns / len(field.some)
        for title, method in (("Rayleigh sum, Numba", rayleigh_numba), ("Rayleigh sum, NumPy", rayleigh_numpy)):
            program = field.rayleigh(method, across, around)
            error = field.error(program, True)
            programs.append((title, lambda program=program: part * seconds(program[0]),
                             f"{across} x {around}", error))
        table(f"{name}, {bound:.0e}", programs, 1e3)


def compare_heat(library):
    perfusion, blood_heat, conductivity = 5.0, 3617.0, 0.51
    for n, spacing in ((65, 1e-3), (129, 0.5e-3)):
        x = (np.arange(n) - n // 2) * spacing
        pressure = 1e6 * np.exp(-(x[:, None, None] / 8e-3)**2 - (x[:, None] / 2e-3)**2 - (x / 2e-3)**2)
        zeros, scratch, rise = np.zeros_like(pressure), np.zeros_like(pressure), np.zeros_like(pressure)
        pointers = [a.ctypes.data_as(ctypes.c_void_p) for a in (pressure, zeros, scratch, rise)]

        def kesto(sweeps):
            return library.kesto_heat(n, ctypes.c_double(spacing), ctypes.c_double(perfusion),
                                      ctypes.c_double(blood_heat), ctypes.c_double(conductivity), sweeps, *pointers)

        # Sines diagonalise the seven-point balance: solved exactly, by two transforms.
        def sine_transform():
            mode = 2 * (1 - np.cos(np.pi * np.arange(1, n - 1) / (n - 1))) * conductivity / spacing**2
            source = scipy.fft.dstn(pressure[1:-1, 1:-1, 1:-1]**2, type=1, workers=1)
            source /= mode[:, None, None] + mode[:, None] + mode + perfusion * blood_heat
            return scipy.fft.idstn(source, type=1, workers=1, overwrite_x=True)

        exact = sine_transform()

        def error(sweeps):
            assert kesto(sweeps) == 0
            return abs(rise[1:-1, 1:-1, 1:-1] - exact).max() / exact.max()

        finest = error(2000)
        print(f"heat, {n}^3: after 2000 sweeps the library is off the sine transform by {finest:.0e} of the peak",
              file=sys.stderr, flush=True)
        assert finest < 1e-9
        programs = []
        for bound in bounds + (1e-9,):
            sweeps = smallest(lambda s: error(s) <= bound, 2)
            programs.append((f"KESTO, {sweeps} sweeps", lambda s=sweeps: seconds(lambda: kesto(s)), "", error(sweeps)))
        programs.append(("sine transform, SciPy", lambda: seconds(sine_transform), "", 0.0))
        table(f"heat, {n}^3", programs, 1e3)


def main():
    os.sched_setaffinity(0, {min(os.sched_getaffinity(0))})
    library = ctypes.CDLL(sys.argv[1])
    library.kesto_vectors.restype = ctypes.c_char_p
    faces = [("disc", 7.5e-3, 0.0), ("rectangle", 5e-3, 10e-3), ("bowl", 15e-3, 40e-3)]
    wanted = sys.argv[2:] or [face[0] for face in faces] + ["heat"]
    with open("/proc/cpuinfo") as info:
        cpu = next((line.split(":")[1].strip() for line in info if line.startswith("model name")), platform.machine())
    print(f"{cpu}; KESTO with {library.kesto_vectors().decode()}; Python {platform.python_version()}, "
          f"Numba {numba.__version__}, NumPy {np.__version__}, SciPy {scipy.__version__}; one core, {turns} turns\n")
    print("| case | program | nodes | error | ms, median | from, to | times the first |")
    print("|---|---|---:|---:|---:|---:|---:|")
    for face in faces:
        if face[0] in wanted:
            compare_fields(library, face)
    if "heat" in wanted:
        compare_heat(library)


if __name__ == "__main__":
    main()
