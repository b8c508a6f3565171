"""What the Python package adds to the engine: processor time of calls at 12 megapixels and at 64 x 48, medians.

Usage: python_calls.py BUILD_FOLDER [--rounds N]    Built with -DCFA_BUILD_BENCH=ON; numpy is needed.
"""

import argparse
import ctypes
import json
import os
import statistics
import subprocess
import sys
import tempfile
import time

import numpy as np

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
LARGE, SMALL = (4000, 3000), (64, 48)


def engine_ms(build, pixels):
    """The engine with rows from memory to nowhere, as cfa_bench measures it, scaled to these pixels."""
    with tempfile.NamedTemporaryFile(suffix=".json") as file:
        options = ["--benchmark_filter=engine/default", f"--benchmark_out={file.name}", "--benchmark_out_format=json"]
        subprocess.run([os.path.join(build, "bench", "cfa_bench"), *options], check=True, capture_output=True)
        return json.load(file)["benchmarks"][0]["per_pixel"] * pixels * 1e3


def processor_ms(function):
    start = time.thread_time()
    function()
    return (time.thread_time() - start) * 1e3


class Calls:
    """The ways to run one block on one random mosaic, side by side: name: milliseconds of each round."""

    def __init__(self, size):
        from cfa_cmodel import Block
        from cfa_cmodel._library import Image, lib

        width, height = size
        block = Block()
        raw = np.random.default_rng(1).integers(0, 4096, (height, width), np.uint16)
        self.out = out = block(raw)  # holds the memory that the library writes to
        images = [ctypes.byref(Image(array.ctypes.data)) for array in (out.rgb, out.dc, out.gain)]
        arguments = (block._handle, width, height, raw.ctypes.data, 0, *images)
        self.ways = {
            "library": lambda: lib.cfa_block_run(*arguments),
            "block(raw)": lambda: block(raw),
        }
        self.times = {name: [] for name in self.ways}

    def round(self):
        for name, way in self.ways.items():
            self.times[name].append(processor_ms(way))

    def median(self, name):
        return statistics.median(self.times[name])


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("build", help="the build folder")
    parser.add_argument("--rounds", type=int, default=15, help="of 12 megapixels (15); 64 x 48 has 200 times as many")
    options = parser.parse_args()
    build = os.path.abspath(options.build)
    os.environ.setdefault("CFA_BLOCK_LIBRARY", os.path.join(build, "libcfa_block.so.1"))
    sys.path.insert(0, os.path.join(ROOT, "bindings", "python"))

    print("Load at start (idle: near 0):", *os.getloadavg())
    large, small, engine = Calls(LARGE), Calls(SMALL), []
    for _ in range(options.rounds):
        engine.append(engine_ms(build, LARGE[0] * LARGE[1]))
        large.round()
        for _ in range(200):
            small.round()
    alone = statistics.median(engine)
    print(f"{LARGE[0]} x {LARGE[1]}, default registers: the engine alone {alone:.1f} ms")
    for name in large.ways:
        print(f"  {name:12}{large.median(name):8.1f} ms  {large.median(name) / alone:.3f} of the engine alone")
    work, whole = small.median("library") * 1e3, small.median("block(raw)") * 1e3
    print(f"{SMALL[0]} x {SMALL[1]}: {whole - work:.1f} microseconds a call beyond the library's {work:.1f}")


if __name__ == "__main__":
    main()
