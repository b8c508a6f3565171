"""The measurement behind side_by_side: Python's standard library only, programs already built.

Usage: measure.py BUILD_FOLDER [--runs N] [--core N]
"""

import argparse
import os
import resource
import shutil
import struct
import subprocess
import tempfile

import minimal_dng
from timed_run import Program, fail, interleave

SIZES = [(816, 612), (1632, 1224), (4000, 3000), (8160, 6120), (11536, 8652)]  # 0.5, 2, 12, 50, 100 megapixels
MAIN_SIZE = (4000, 3000)
FLAT_RGB = (1000, 2000, 3000)
ALL_FEATURES = """[cfa]
reg_cfa_ymoire_enable = 1
reg_cfa_shpn_enable = 1
reg_cfa_shpn_gain_value = 40
reg_cfa_cmoire_protclr3_enable = 1
"""
LEVELS = [
    ("x86-64-v4 (AVX-512)", {"avx512f", "avx512bw", "avx512cd", "avx512dq", "avx512vl"}),
    ("x86-64-v3 (AVX2)", {"avx2", "bmi1", "bmi2", "f16c", "fma", "movbe", "abm"}),
]


class Bench:
    """The folder of the pictures and the programs that work in it."""

    def __init__(self, build, folder):
        self.build, self.folder = build, folder
        for name, text in (("default.ini", ""), ("all.ini", ALL_FEATURES), ("top.ini", "")):
            with open(self.path(name), "w", encoding="ascii") as file:
                file.write(text)

    def path(self, name):
        return os.path.join(self.folder, name)

    def chart(self, kind, size, *more):
        picture = self.path(f"{kind}_{size[0]}x{size[1]}.ppm")
        tool = os.path.join(self.build, "cfatool")
        command = [tool, "chart", kind, "--size", f"{size[0]}x{size[1]}", "--bayer", "0", *more, "-o", picture]
        if subprocess.run(command, check=False).returncode != 0:
            fail("no chart")
        return picture

    def outputs(self):
        return [self.path(name) for name in ("out.ppm", "out_dc.ppm", "out_sg.ppm")]

    def block(self, name, ini, mosaic):
        program = os.path.join(self.build, "cfa_cmodel")
        log = self.path("log.txt")
        command = [program, self.path(ini), log, "2", "0", self.folder, self.path("top.ini"), mosaic, *self.outputs()]
        return Program(name, command, self.outputs())

    def files_only(self, mosaic):
        program = os.path.join(self.build, "bench", "files_only")
        return Program("files only", [program, mosaic, *self.outputs()], self.outputs())

    def opencv(self, program, how, mosaic):
        command = [os.path.join(self.build, "bench", program), mosaic, self.path("peer.ppm")]
        return Program(f"OpenCV edge-aware, {how}", command, command[2:])

    def peers(self, mosaic):
        """They write the RGB picture only."""
        plain = self.opencv("opencv_plain", "imread/imwrite", mosaic)
        return [plain, self.opencv("opencv_bulk", "bulk files", mosaic), self.dcraw(mosaic)]

    def dcraw(self, mosaic):
        """PPG into linear 16 bits with the least work beside it: no white balance, no colour conversion."""
        stem = mosaic.replace(".ppm", "_dcraw")
        minimal_dng.write(mosaic, stem + ".dng")
        options = ["-4", "-q", "2", "-o", "0", "-r", "1", "1", "1", "1"]
        return Program("dcraw PPG", ["dcraw", *options, stem + ".dng"], [stem + ".ppm"])


def check_peer(program, scale):
    """A flat 64 x 64 picture has to keep its colours: the peer reads the samples and the pattern as they are."""
    program.run(keep=False)
    with open(program.outputs[0], "rb") as file:
        file.seek(-(64 * 32 + 32) * 6, os.SEEK_END)  # the middle
        got = struct.unpack(">3H", file.read(6))
    if any(abs(value / scale - want) > 0.01 * want for value, want in zip(got, FLAT_RGB)):
        fail(f"{program.name} makes {got} of a flat {FLAT_RGB}")


def check_peers(bench):
    rgb = ",".join(str(value) for value in FLAT_RGB)
    flat = bench.chart("flat", (64, 64), "--rgb", rgb)
    opencv_plain, opencv_bulk, dcraw = bench.peers(flat)
    check_peer(opencv_plain, 1)
    check_peer(opencv_bulk, 1)
    check_peer(dcraw, 65535 / 4095)


def instruction_set():
    with open("/proc/cpuinfo", encoding="ascii", errors="replace") as file:
        lines = file.read().splitlines()
    flags = {word for line in lines if line.startswith("flags") for word in line.split()}
    model = next((line.split(":")[1].strip() for line in lines if line.startswith("model name")), os.uname().machine)
    return model, next((name for name, needed in LEVELS if needed <= flags), "baseline")


def print_programs(programs):
    print(f"{'':44}{'ms':>8}{'fastest':>9}{'CPU ms':>8}{'MiB':>7}")
    for p in programs:
        print(f"{p.name:44}{p.ms():8.1f}{p.fastest_ms():9.1f}{p.cpu_ms():8.1f}{p.mib():7.1f}")


def print_goal(text, ratio, cpu_ratio, goal):
    cpu = "" if cpu_ratio is None else f"{cpu_ratio:.2f}"
    verdict = "" if goal is None else f"<= {goal:<6}" + ("met" if ratio <= goal else "MISSED")
    print(f"{text:44}{ratio:8.2f}{cpu:>17}  {verdict}")


def measure_main_size(bench, runs, level):
    mosaic = bench.chart("noise", MAIN_SIZE)
    block = bench.block("cfa_cmodel, default registers", "default.ini", mosaic)
    features = bench.block("cfa_cmodel, all features", "all.ini", mosaic)
    opencv_plain, opencv_bulk, dcraw = bench.peers(mosaic)
    floor = bench.files_only(mosaic)
    programs = [block, features, opencv_plain, opencv_bulk, dcraw, floor]
    interleave(programs, runs)
    print(f"\nWhole runs, {MAIN_SIZE[0]} x {MAIN_SIZE[1]} random samples, medians of {runs} interleaved runs")
    print_programs(programs)
    column = {LEVELS[0][0]: 0, LEVELS[1][0]: 1}.get(level)
    print(f"\n{'Ratios of medians':44}{'':8}{'of CPU times':>17}  goal on this instruction set")
    opencv_goal = (0.9, 1.2)
    peers = ((opencv_plain, opencv_goal), (opencv_bulk, opencv_goal), (dcraw, (0.6, 0.8)), (floor, (3.3, 4.5)))
    for peer, goals in peers:
        goal = None if column is None else goals[column]
        print_goal(f"default / {peer.name}", block.ms() / peer.ms(), block.cpu_ms() / peer.cpu_ms(), goal)
    print_goal("all features / default", features.ms() / block.ms(), features.cpu_ms() / block.cpu_ms(), None)
    print_goal("peak memory, MiB", block.mib(), None, 80)


def measure_sizes(bench, runs):
    pairs = []
    for size in [(16, 16), *SIZES]:
        mosaic = bench.chart("noise", size)
        block = bench.block("cfa_cmodel", "default.ini", mosaic)
        pairs.append((size, block, bench.files_only(mosaic)))
    interleave([program for _, *programs in pairs for program in programs], runs)
    print(f"\nSizes, default registers, medians of {runs} interleaved runs (16 x 16: what starting takes)")
    print(f"{'':18}{'megapixels':>11}{'ms':>9}{'ns a pixel':>12}{'CPU':>7}{'files only':>12}{'MiB':>8}")
    costs, cpu_costs = [], []
    for (width, height), block, floor in pairs:
        mega = width * height / 1e6
        text = f"{f'{width} x {height}':18}{mega:11.1f}{block.ms():9.2f}"
        if mega >= 0.1:
            costs.append(block.ms() / mega)
            cpu_costs.append(block.cpu_ms() / mega)
            text += f"{costs[-1]:12.2f}{cpu_costs[-1]:7.2f}{floor.ms() / mega:12.2f}"
        else:
            text += f"{'CPU ms':>12}{block.cpu_ms():7.2f}{'':12}"
        print(text + f"{block.mib():8.1f}")
    print_goal("dearest / cheapest pixel", max(costs) / min(costs), max(cpu_costs) / min(cpu_costs), 1.15)


def main():
    parser = argparse.ArgumentParser(prog="side_by_side", description="Whole runs of the block and its peers.")
    parser.add_argument("build", help=argparse.SUPPRESS)
    parser.add_argument("--runs", type=int, default=7, help="counted runs of each program (7)")
    parser.add_argument("--core", type=int, default=max(os.sched_getaffinity(0)), help="the core to run on (the last)")
    options = parser.parse_args()
    if options.runs < 1 or options.core not in os.sched_getaffinity(0):
        fail("no such number of runs or no such core")
    if shutil.disk_usage("/dev/shm").free < 2 << 30:
        fail("2 GB are needed in /dev/shm")
    os.sched_setaffinity(0, {options.core})  # the programs inherit it
    model, level = instruction_set()
    print(f"{model}, {level}; core {options.core} of {os.cpu_count()}; files in /dev/shm")
    print("Load at start (idle: near 0):", *os.getloadavg())
    with tempfile.TemporaryDirectory(dir="/dev/shm", prefix="side_by_side.") as folder:
        bench = Bench(options.build, folder)
        check_peers(bench)
        measure_main_size(bench, options.runs, level)
        measure_sizes(bench, options.runs)
    print("\nms: wall clock. CPU: user and system time, which other programs at work on the machine disturb less.")
    least = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    print(f"MiB: peak resident memory; {least:.1f} are this script's own and hide what is below.")


if __name__ == "__main__":
    main()
