"""The block: registers as attributes, a call for a run."""

from __future__ import annotations

import ctypes
import difflib
import operator
import os
import threading
from collections.abc import Iterable, Mapping
from dataclasses import dataclass
from typing import TYPE_CHECKING, Any, Optional, SupportsIndex, Union

import numpy as np
import numpy.typing as npt

from ._library import INI_STRICT, Image, lib
from ._memory import ResultMemory
from .bayer import Bayer, as_samples, bayer_id
from .errors import ArgumentError, FileError, MissingFileError, NoMemoryError, RegisterError, SizeError, error_of
from .tables import REGISTERS, planes as all_planes


@dataclass(frozen=True)
class Result:
    """What a run gives."""

    rgb: npt.NDArray[np.uint16]  # (height, width, 3)
    dc: npt.NDArray[np.uint16]  # (height, width)
    gain: npt.NDArray[np.uint16]  # (height, width), 1024 is 1.0
    planes: Mapping[str, npt.NDArray[np.int32]]  # by name, in pipeline order
    slow_reason: Optional[str]  # why the run went over whole planes; None if it did not


class Block:
    """A block with registers of its own; a call runs it.

        block = Block(bayer="rggb", edge_tol=300)
        block.reg_cfa_ymoire_enable = 1
        out = block(raw)                        # out.rgb, out.dc, out.gain
        out = block(raw, planes=("GH", "SigH")) # out.planes["GH"]

    Registers are attributes by their keys and, where it is a name, by what follows reg_cfa_ or reg_. A value that does
    not fit is a RegisterError. Blocks share nothing, and other threads run during a call; a block that is in use by one
    thread makes the others wait for it. It keeps the memory of large results that are no longer used for later ones."""

    __slots__ = ("_handle", "_lock", "_memory", "__weakref__")

    def __init__(self, *, bayer: Optional[Bayer] = None, **registers: SupportsIndex) -> None:
        self._lock = threading.Lock()
        self._memory = ResultMemory()
        self._handle = lib.cfa_block_new()
        if not self._handle:
            raise NoMemoryError("not enough memory")
        if bayer is not None:
            self._set("reg_img_bayerid", bayer_id(bayer))
        for name, value in registers.items():
            if name not in _NAMES:
                close = difflib.get_close_matches(name, _NAMES, 1)
                raise RegisterError(f"no register '{name}'" + (f"; did you mean '{close[0]}'?" if close else ""))
            setattr(self, name, value)

    def __del__(self, delete: Any = lib.cfa_block_delete) -> None:
        delete(getattr(self, "_handle", None))

    @property
    def bayer(self) -> int:
        """The pattern: its id 0 to 15, or one of "bggr", "gbrg", "grbg", "rggb" for 0 to 3."""
        return self._get("reg_img_bayerid")

    @bayer.setter
    def bayer(self, value: Bayer) -> None:
        self._set("reg_img_bayerid", bayer_id(value))

    def load(self, path: Union[str, bytes, os.PathLike[Any]], *, strict: bool = False) -> None:
        """Loads registers from an INI file, both sections, as the tool takes them: what it does not know is passed
        over, numbers are cut to the width. With strict such a line is an IniError, and no register changes."""
        name = os.fsencode(path)
        if b"\0" in name:
            raise ArgumentError("path: a zero byte")
        try:
            self._call(lib.cfa_block_load_ini, name, INI_STRICT if strict else 0)
        except FileError as error:
            try:
                os.stat(name)
            except FileNotFoundError:
                missing = MissingFileError(str(error))
                missing.code = error.code
                raise missing from None
            except OSError:
                pass  # there, as far as can be seen: out of reach
            raise

    def load_text(self, text: str, *, strict: bool = False) -> None:
        """Loads registers from the text of an INI file."""
        data = text.encode()
        self._call(lib.cfa_block_load_ini_text, data, len(data), INI_STRICT if strict else 0)

    def ini(self) -> str:
        """All registers as the text of an INI file."""
        with self._lock:
            size = lib.cfa_block_ini_text(self._handle, None, 0) + 1
            text = ctypes.create_string_buffer(size)
            if lib.cfa_block_ini_text(self._handle, text, size) == 0:
                raise NoMemoryError("not enough memory")
        return text.value.decode()

    def reset(self) -> None:
        """Sets all registers to their reset values."""
        self._call(lib.cfa_block_reset)

    def __call__(
        self, raw: npt.ArrayLike, planes: Union[bool, str, Iterable[str]] = (), *, threads: int = 1
    ) -> Result:
        """Runs the block on a mosaic (height, width) of samples 0 to 65535; the block itself is made for 0 to 4095.
        Rows of contiguous uint16 samples are read where they are, anything else is copied first.

        planes names those to keep, True keeps all; they come exact, as int32 copies, and those whose stage the
        registers leave out are absent. threads is how many the run may work on: 2 take 0.6 of the time from a
        megapixel on, more are 2."""
        mosaic, stride = _rows(raw)
        height, width = mosaic.shape
        names = _plane_names(planes)
        with self._lock:
            arrays = self._memory.arrays(height, width)
            images = [ctypes.byref(Image(array.ctypes.data)) for array in arrays]
            self._check(lib.cfa_block_set_threads(self._handle, max(0, min(operator.index(threads), 2))))
            if names:
                self._check(lib.cfa_block_keep_planes(self._handle, names))
            try:
                self._check(lib.cfa_block_run(self._handle, width, height, mosaic.ctypes.data, stride, *images))
                reason = lib.cfa_block_slow_reason(self._handle)
                kept = self._kept_planes() if names else {}
            finally:
                if names:
                    lib.cfa_block_keep_planes(self._handle, b"")  # frees them
        return Result(*arrays, kept, reason.decode() if reason else None)

    def __repr__(self) -> str:
        changed = [f"{r.key}={value}" for r in REGISTERS if (value := self._get(r.key)) != r.reset]
        return f"Block({', '.join(changed)})"

    def __reduce__(self) -> Any:  # for copy and pickle
        return _block_of_text, (self.ini(),)

    def _kept_planes(self) -> dict[str, npt.NDArray[np.int32]]:
        kept = {}
        for info in all_planes():
            plane = lib.cfa_block_plane(self._handle, info.name.encode())
            if plane:
                size = (plane.contents.height, plane.contents.width)
                shape = size if info.channels == 1 else (*size, info.channels)
                kept[info.name] = np.ctypeslib.as_array(plane.contents.data, shape).copy()
        return kept

    def _get(self, key: str) -> int:
        value = ctypes.c_int32()
        self._call(lib.cfa_block_get, key.encode(), ctypes.byref(value))
        return value.value

    def _set(self, key: str, value: SupportsIndex) -> None:
        number = operator.index(value)
        if number.bit_length() > 63:  # ctypes would cut it
            raise RegisterError(f"{key}: {number} is beyond 64 bits")
        self._call(lib.cfa_block_set, key.encode(), number)

    def _call(self, function: Any, *arguments: Any) -> None:
        with self._lock:
            self._check(function(self._handle, *arguments))

    def _check(self, code: int) -> None:
        if code != 0:
            raise error_of(code, lib.cfa_block_error(self._handle).decode(errors="replace"))

    if TYPE_CHECKING:  # registers come from the library

        def __getattr__(self, name: str) -> int: ...
        def __setattr__(self, name: str, value: Any) -> None: ...


def _block_of_text(text: str) -> Block:
    block = Block()
    block.load_text(text)
    return block


def _rows(raw: npt.ArrayLike) -> tuple[npt.NDArray[np.uint16], int]:
    """A mosaic whose rows are contiguous, and the bytes from row to row (0: packed)."""
    mosaic = as_samples("raw", raw)
    if mosaic.ndim != 2:
        raise ArgumentError(f"raw: the shape {mosaic.shape} is not (height, width)")
    if max(mosaic.shape) > 0xFFFFFFFF:
        raise SizeError("the picture is too large")
    row, pixel = mosaic.strides
    if mosaic.flags.c_contiguous:
        return mosaic, 0
    if pixel == 2 and abs(row) >= 2 * mosaic.shape[1]:
        return mosaic, row
    return np.ascontiguousarray(mosaic), 0


def _plane_names(planes: Union[bool, str, Iterable[str]]) -> bytes:
    """As the library takes them."""
    if isinstance(planes, bool):
        return b"*" if planes else b""
    return planes.encode() if isinstance(planes, str) else ",".join(planes).encode()


def _add_registers() -> frozenset[str]:
    """Makes every register an attribute of Block by its key and its short name; returns all these names."""
    short = [register.short for register in REGISTERS]
    names = set()
    for register in REGISTERS:
        for name in (register.key, register.short):
            if name == register.key or (short.count(name) == 1 and name.isidentifier() and not hasattr(Block, name)):
                setattr(Block, name, register)
                names.add(name)
    return frozenset(names)


_NAMES = _add_registers()
