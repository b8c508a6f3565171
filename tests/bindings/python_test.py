"""The package cfa_cmodel over the built library. The environment names library, test data and colour codes."""

import copy
import fcntl
import os
import re
import resource
import tempfile
import unittest
from concurrent.futures import ThreadPoolExecutor, TimeoutError
from pathlib import Path
from unittest import mock

import cfa_cmodel as cfa
import numpy as np
from cfa_cmodel import Block, read_picture, write_picture

DATA = Path(os.environ["CFA_TEST_DATA"])
SCENE = DATA / "golden" / "everything_on_scene_id2"
RAW = read_picture(SCENE / "raw.ppm")
ROUGH = "golden2/36_31x10_max4095_id4/cfa.ini"  # values beyond their ranges
equal = np.testing.assert_array_equal


def loaded(folder):
    block = Block()
    block.load(folder / "cfa.ini")
    block.load(folder / "cmodel_top.ini")
    return block


class Runs(unittest.TestCase):
    def test_golden_pictures(self):
        raws = {path.parent: read_picture(path) for path in DATA.glob("golden*/*/raw.ppm")}
        runs = {folder: loaded(folder)(raw) for folder, raw in raws.items() if raw.dtype != np.uint32}  # too deep
        self.assertGreater(len(runs), 50)
        for folder, out in runs.items():
            for name, got in (("out.ppm", out.rgb), ("out_dc.ppm", out.dc), ("out_sg.ppm", out.gain)):
                want = read_picture(folder / name)
                equal(got.astype(want.dtype), want, f"{folder} {name}")  # their low bytes

    def test_planes(self):
        block = loaded(SCENE)
        out = block(RAW, planes=True)
        shown = {"AvgRGB": np.s_[:], "GH": np.s_[..., 1], "MaxRGB": np.s_[..., 0], "DirInfo": np.s_[:]}
        for name, part in shown.items():  # those whose image holds samples as they are
            equal(out.planes[name][part], read_picture(SCENE / f"dbg/dbg_img_{name}.ppm"), name)
        self.assertLess(out.planes["GH_hp"].min(), 0)
        self.assertEqual(list(out.planes), [plane.name for plane in cfa.planes()])
        self.assertEqual(list(block(RAW, planes=("SigH", "GH")).planes), ["GH", "SigH"])
        block.ymoire_enable = 0
        self.assertEqual(list(block(RAW, planes="MoireWgt,GH").planes), ["GH"])
        self.assertEqual((block(RAW).planes, block(RAW, planes=False).planes, block(RAW).slow_reason), ({}, {}, None))

    def test_rows_are_read_where_they_are(self):
        padded, block = np.pad(RAW, 2), loaded(SCENE)
        views = (  # array, whether it is passed as it is, bytes from row to row
            (RAW, True, 0),
            (padded[2:-2, 2:-2], True, padded.strides[0]),
            (RAW[::-1].copy()[::-1], True, -RAW.strides[0]),
            (np.repeat(RAW, 2, 1)[:, ::2], False, 0),
            (RAW.astype(">u2"), False, 0),
        )
        want = block(RAW).rgb
        for view, in_place, stride in views:
            with mock.patch.object(cfa.block, "lib", wraps=cfa.block.lib) as library:
                equal(block(view).rgb, want)
            address, row_stride = library.cfa_block_run.call_args[0][3:5]
            self.assertEqual((address == view.ctypes.data, row_stride), (in_place, stride))
        equal(block(np.broadcast_to(RAW[:1], RAW.shape)).rgb, block(np.repeat(RAW[:1], len(RAW), 0)).rgb)

    def test_memory_of_a_result_is_used_again_when_its_last_view_is_gone(self):
        block, raw = Block(), np.tile(RAW, (16, 16))
        out = block(raw)
        address, part, dc = out.rgb.ctypes.data, out.rgb[5:9, :, 1], out.dc
        want = part.copy(), dc.copy()
        del out
        block(raw * 0)
        self.assertTrue((part == want[0]).all() and (dc == want[1]).all())
        del part
        self.assertIn(address, [out.rgb.ctypes.data for out in [block(raw), block(raw)]])

    def test_one_block_in_many_threads(self):
        block = loaded(SCENE)
        want = block(RAW, planes="SigH").planes["SigH"]
        with ThreadPoolExecutor(4) as threads:
            for out in threads.map(lambda _: block(RAW, planes="SigH"), range(80)):
                equal(out.planes["SigH"], want)


class Registers(unittest.TestCase):
    def test_attributes(self):
        block = Block(bayer="GRBG", edge_tol=300, reg_cfa_ymoire_enable=True, ymoire_edge_slope=np.int16(-16384))
        self.assertEqual((block.bayer, block.reg_cfa_edge_tol, block.ymoire_edge_slope), (2, 300, -16384))
        changed = "reg_cfa_ymoire_enable=1, reg_cfa_edge_tol=300, reg_cfa_ymoire_edge_slope=-16384, reg_img_bayerid=2"
        self.assertEqual((repr(block), repr(copy.copy(block))), 2 * (f"Block({changed})",))
        block.load_text("[cfa]\nreg_cfa_edge_tol = 5000\n")  # cut to 12 bits
        self.assertEqual(block.edge_tol, 904)
        block.reset()
        self.assertEqual(repr(block), "Block()")
        names = set(dir(block))
        self.assertTrue(names >= {"reg_cfa_edge_tol", "edge_tol"} and all(name.isidentifier() for name in names))
        self.assertRegex(Block.edge_tol.__doc__, "(?s)tolerance.*0 to 4095 .*256 at reset")

    def test_wrong_calls(self):
        block = Block(edge_tol=7)
        table = (
            (lambda: setattr(block, "edge_tol", 4096), cfa.RegisterError, "^reg_cfa_edge_tol: 4096 is not 0 to 4095$"),
            (lambda: setattr(block, "edge_tol", 5 + (1 << 32)), cfa.RegisterError, "is not 0 to 4095"),
            (lambda: setattr(block, "edge_tol", 5 + (1 << 64)), cfa.RegisterError, "beyond 64 bits"),
            (lambda: setattr(block, "edge_tl", 1), AttributeError, "edge_tl"),
            (lambda: Block(edge_tl=1), cfa.RegisterError, "no register 'edge_tl'; did you mean 'edge_tol'"),
            (lambda: Block(bayer="rgb"), cfa.RegisterError, "none of bggr"),
            (lambda: cfa.mosaic(np.zeros((3, 3, 3), int), 16), cfa.RegisterError, "16 is not 0 to 15"),
            (lambda: cfa.mosaic(RAW, 0), cfa.ArgumentError, "shape"),
            (lambda: block.load(DATA / ROUGH, strict=True), cfa.IniError, ROUGH + ":13: reg_cfa_ghp"),
            (lambda: block.load("none.ini"), FileNotFoundError, "^none.ini: No such file"),
            (lambda: block.load("a\0b"), cfa.ArgumentError, "zero byte"),
            (lambda: block.load_text("\nreg_x = 1\n[cfa]\nreg_x = 1", strict=True), cfa.IniError, "^text:4: no reg"),
            (lambda: block(RAW[:2]), cfa.SizeError, "too small"),
            (lambda: block(RAW[0]), cfa.ArgumentError, "shape"),
            (lambda: block(RAW * 1.0), cfa.ArgumentError, "float64"),
            (lambda: block(RAW.astype(int) - 5000), cfa.ArgumentError, "is not 0 to 65535"),
            (lambda: block(RAW.astype(int) << 16), cfa.ArgumentError, "is not 0 to 65535"),
            (lambda: block(RAW, planes=["GX"]), cfa.PlaneError, "no plane 'GX'"),
            (lambda: block(RAW, threads=0), cfa.ArgumentError, "threads: not 1 or more"),
        )
        for call, kind, line in table:
            with self.assertRaisesRegex(kind, line):
                call()
        self.assertEqual(block.edge_tol, 7)
        for path, kind in (("none.ini", cfa.MissingFileError), (DATA, cfa.FileError), ("n" * 999, cfa.FileError)):
            with self.assertRaises(OSError) as caught:
                block.load(path)
            self.assertEqual((type(caught.exception), caught.exception.code), (kind, -5))
        with mock.patch.object(cfa._library, "VERSION", "1.9999.0"):
            self.assertRaisesRegex(ImportError, "version 1.* does not fit 1.9999.0", cfa._library._load)


class Pictures(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.path = Path(folder.name) / "picture.ppm"

    def test_mosaics_have_the_patterns_of_the_block(self):
        rows = re.findall(r"\{([\d ,]+)\}", Path(os.environ["CFA_COLOUR_CODES"]).read_text())
        self.assertEqual(len(rows), 16)
        site = {0: 3013, 1: 2002, 2: 2002, 3: 1001, 16: 2002, 17: 2002}  # others: (1001 + 2 * 2002 + 3013) // 4
        flat = np.broadcast_to(np.array([1001, 2002, 3013]), (5, 9, 3))
        for bayer, row in enumerate(rows):
            codes = np.array([site.get(int(code), 2004) for code in row.split(",")] + 12 * [3013] * (4 <= bayer < 8))
            side = 2 if bayer < 4 else 4
            equal(cfa.mosaic(flat, bayer), np.tile(codes.reshape(side, side), (3, 5))[:5, :9], str(bayer))
        for name in ("bggr", "gbrg", "grbg", "rggb"):  # the block gives a flat colour back
            equal(Block(bayer=name)(cfa.mosaic(flat, name)).rgb[2, 3:6], flat[2, 3:6], name)

    def test_bytes(self):
        table = (  # depth, samples; kind, size and maximum value; bytes of the samples by hand
            (1, [[0, 1]], b"P5 2 1 1", b"\0\1"),
            (8, [[255], [7]], b"P5 1 2 255", b"\xff\7"),
            (12, [[[1, 2, 0xFED]]], b"P6 1 1 4095", b"\0\1\0\2\x0f\xed"),
            (9, [[0x1170, 511]], b"P5 2 1 511", b"\x11\x70\1\xff"),  # above the depth
            (17, [[0x1ABCD, 5]], b"P5 2 1 131071", b"\1\xab\xcd\0\0\5"),
            (32, [[0xFFFFFFFE]], b"P5 1 1 4294967295", b"\xff\xff\xff\xfe"),
            (25, [[[1, 2, 0x1ABCDEF]]], b"P6 1 1 33554431", b"\0\0\0\1\0\0\0\2\1\xab\xcd\xef"),
            (32, [[[1, 2, 3]]], b"P6 1 1 0", b"\0\0\0\1\0\0\0\2\0\0\0\3"),
            (16, [[9]], b"P5 1 1 65535", b"\0\x09"),  # over a longer file
        )
        for depth, samples, header, data in table:
            kind, width, height, maximum = header.split()
            write_picture(self.path, samples, depth)
            text = b"%s\n# Created by ZEMBRO DPU Model\n%s %s\n%s\n" % (kind, width, height, maximum)
            self.assertEqual(self.path.read_bytes(), text + data)
            equal(read_picture(self.path), samples)
            self.assertEqual(cfa.picture_info(self.path).depth, depth)

    def test_headers(self):
        self.path.write_bytes(b"P5#c\n # 1 2\n2#\n#\n1\t255\r\n\n#")
        equal(read_picture(self.path), [[10, 35]])
        table = (
            (b"P4\n1 1\n255\n\0", "no header"),
            (b"P5\n1 1\n255", "no header"),
            (b"P5\n# 1 1 255 \0\n", "no header"),
            (b"P5\n1 1\n0\n\0", "maximum value 0"),
            (b"P5\n1 1\n4294967296\n\0\0\0\0\0", "maximum value 4294967296"),
            (b"P5\n2 1\n256\n\0\0\0", "3 bytes of samples, 4 expected"),
            (b"P5\n1 1\n255\n\0\0", "2 bytes of samples, 1 expected"),
        )
        for data, line in table:
            self.path.write_bytes(data)
            self.assertRaisesRegex(cfa.PictureError, line, read_picture, self.path)

    def test_refused_and_failed_writing(self):
        table = (([[256]], 8), ([[-1, 0]], 8), ([[1 << 24]], 24), ([[1]], 33), ([[0]], 0), ([1], 8), ([[0.5]], 8))
        for samples, depth in table:
            self.assertRaises(cfa.PictureError, write_picture, self.path, samples, depth)
        self.assertFalse(self.path.exists())
        limits = resource.getrlimit(resource.RLIMIT_FSIZE)
        self.addCleanup(resource.setrlimit, resource.RLIMIT_FSIZE, limits)
        resource.setrlimit(resource.RLIMIT_FSIZE, (4096, limits[1]))
        self.assertRaisesRegex(OSError, str(self.path), write_picture, self.path, np.zeros((99, 99), int))
        self.assertEqual(self.path.stat().st_size, 0)

    def test_a_locked_file_is_waited_for(self):
        write_picture(self.path, [[1]])
        for call in (read_picture, lambda path: write_picture(path, [[2]])):
            with ThreadPoolExecutor() as threads, open(self.path, "rb") as file:
                fcntl.flock(file, fcntl.LOCK_EX)
                ended = threads.submit(call, self.path)
                self.assertRaises(TimeoutError, ended.result, 0.1)
                self.assertGreater(self.path.stat().st_size, 0)
        equal(read_picture(self.path), [[2]])


if __name__ == "__main__":
    unittest.main()
