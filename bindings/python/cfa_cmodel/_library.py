"""The C functions of libcfa_block through ctypes, which lets other threads run during a call."""

from __future__ import annotations

import ctypes
import os
from collections.abc import Iterator
from ctypes import POINTER, c_char_p, c_int, c_int32, c_int64, c_size_t, c_ssize_t, c_uint, c_uint32, c_void_p
from typing import Any

from .version import VERSION

INI_STRICT = 1


class Register(ctypes.Structure):
    _fields_ = [
        ("key", c_char_p),
        ("section", c_char_p),
        ("meaning", c_char_p),
        ("min", c_int32),
        ("max", c_int32),
        ("reset", c_int32),
        ("bits", c_int32),
        ("is_signed", c_int32),
    ]


class PlaneInfo(ctypes.Structure):
    _fields_ = [
        ("name", c_char_p),
        ("stage", c_char_p),
        ("format", c_char_p),
        ("readers", c_char_p),
        ("meaning", c_char_p),
        ("image", c_char_p),
        ("channels", c_int32),
    ]


class Plane(ctypes.Structure):
    _fields_ = [("info", POINTER(PlaneInfo)), ("data", POINTER(c_int32)), ("width", c_uint32), ("height", c_uint32)]


class Image(ctypes.Structure):
    _fields_ = [
        ("data", c_void_p),
        ("row_stride", c_ssize_t),
        ("pixel_stride", c_ssize_t),
        ("channel_stride", c_ssize_t),
    ]


_FUNCTIONS = {  # name: (result, arguments)
    "cfa_block_version": (c_int, []),
    "cfa_block_new": (c_void_p, []),
    "cfa_block_delete": (None, [c_void_p]),
    "cfa_block_error": (c_char_p, [c_void_p]),
    "cfa_block_set": (c_int, [c_void_p, c_char_p, c_int64]),
    "cfa_block_get": (c_int, [c_void_p, c_char_p, POINTER(c_int32)]),
    "cfa_block_reset": (c_int, [c_void_p]),
    "cfa_register_at": (POINTER(Register), [c_size_t]),
    "cfa_block_load_ini": (c_int, [c_void_p, c_char_p, c_uint]),
    "cfa_block_load_ini_text": (c_int, [c_void_p, c_char_p, c_size_t, c_uint]),
    "cfa_block_ini_text": (c_size_t, [c_void_p, c_char_p, c_size_t]),
    "cfa_block_run": (
        c_int,
        [c_void_p, c_uint32, c_uint32, c_void_p, c_ssize_t, POINTER(Image), POINTER(Image), POINTER(Image)],
    ),
    "cfa_block_set_threads": (c_int, [c_void_p, c_int]),
    "cfa_block_slow_reason": (c_char_p, [c_void_p]),
    "cfa_plane_info_at": (POINTER(PlaneInfo), [c_size_t]),
    "cfa_block_keep_planes": (c_int, [c_void_p, c_char_p]),
    "cfa_block_plane": (POINTER(Plane), [c_void_p, c_char_p]),
}


def _open() -> ctypes.CDLL:
    """The library of $CFA_BLOCK_LIBRARY, else the one beside the package, else the system's."""
    name = "libcfa_block.so.1"
    beside = os.path.join(os.path.dirname(os.path.abspath(__file__)), name)
    path = os.environ.get("CFA_BLOCK_LIBRARY") or (beside if os.path.exists(beside) else name)
    try:
        return ctypes.CDLL(path)
    except OSError as error:
        raise ImportError(f"the block's library: {error}; $CFA_BLOCK_LIBRARY can name it") from None


def _load() -> ctypes.CDLL:
    library = _open()
    for name, (result, arguments) in _FUNCTIONS.items():
        try:
            function = getattr(library, name)
        except AttributeError as error:
            raise ImportError(f"the block's library: {error}") from None
        function.restype, function.argtypes = result, arguments
    major, minor, _ = map(int, VERSION.split("."))
    found = library.cfa_block_version()
    if not 10000 * major + 100 * minor <= found < 10000 * (major + 1):
        raise ImportError(f"the block's library has version {found}, which does not fit {VERSION} of cfa_cmodel")
    return library


lib = _load()


def elements(function: Any) -> Iterator[Any]:
    """What one of the ..._at functions gives, from index 0 to its null."""
    index = 0
    while found := function(index):
        yield found.contents
        index += 1
