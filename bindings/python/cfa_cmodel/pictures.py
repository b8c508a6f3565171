"""Our pictures: binary P5 (grey) and P6 (RGB) with big-endian samples of 1 to 4 bytes."""

from __future__ import annotations

import fcntl
import os
import re
import stat
from typing import Any, NamedTuple, Union

import numpy as np
import numpy.typing as npt

from .errors import PictureError

Path = Union[str, bytes, "os.PathLike[Any]"]

_GAP = rb"(?:\s|#[^\n]*\n)+"  # between words: white space and comments
_HEADER = re.compile(rb"P([56])" + _GAP + rb"(\d{1,10})" + _GAP + rb"(\d{1,10})" + _GAP + rb"(\d{1,10})(?:\r\n|\s)")


class PictureInfo(NamedTuple):
    """What the header of a picture says."""

    width: int
    height: int
    channels: int  # 1 (P5) or 3 (P6)
    depth: int  # bits of the maximum value; samples may lie above that value


def _bytes_of(depth: int) -> int:
    return (depth + 7) // 8


def _read(path: Path) -> tuple[PictureInfo, npt.NDArray[np.uint8]]:
    """The header of a picture and the bytes of its samples. A file that another program holds locked, because it is
    still writing it, is waited for."""
    with open(path, "rb") as file:
        if stat.S_ISREG(os.fstat(file.fileno()).st_mode):
            fcntl.flock(file, fcntl.LOCK_SH)
        data = file.read()
    found = _HEADER.match(data)
    if not found:
        raise PictureError(f"{os.fsdecode(path)}: no header of a P5 or P6 picture")
    kind, width, height, maximum = map(int, found.groups())
    channels = 1 if kind == 5 else 3
    if maximum == 0 and channels == 3:
        maximum = 0xFFFFFFFF  # how 32 bits are written in P6
    if not 0 < maximum <= 0xFFFFFFFF:
        raise PictureError(f"{os.fsdecode(path)}: the maximum value {maximum} is not 1 to 4294967295")
    info = PictureInfo(width, height, channels, maximum.bit_length())
    samples = np.frombuffer(data, np.uint8, offset=found.end())
    need = width * height * channels * _bytes_of(info.depth)
    if samples.size != need:
        raise PictureError(f"{os.fsdecode(path)}: {samples.size} bytes of samples, {need} expected")
    return info, samples


def picture_info(path: Path) -> PictureInfo:
    """What the header of a picture says. Raises PictureError, also for a picture that is cut short, and OSError."""
    return _read(path)[0]


def read_picture(path: Path) -> npt.NDArray[Any]:
    """The samples of a picture: (height, width) or (height, width, 3), uint8, uint16 or uint32 as the depth asks.
    Comments may stand in the header wherever white space may. Raises PictureError and OSError."""
    info, data = _read(path)
    size = _bytes_of(info.depth)
    if size == 3:
        wide = np.zeros((data.size // 3, 4), np.uint8)
        wide[:, 1:] = data.reshape(-1, 3)
        data, size = wide.reshape(-1), 4
    samples = data.view(f">u{size}").astype(f"=u{size}")
    return samples.reshape((info.height, info.width) if info.channels == 1 else (info.height, info.width, 3))


def write_picture(path: Path, samples: npt.ArrayLike, depth: int = 12) -> None:
    """Writes samples of a depth of 1 to 32 bits, (height, width) as P5, (height, width, 3) as P6, byte for byte as the
    tool writes them: those above the depth too as long as they fit its bytes, where the tool would cut them and this is
    a PictureError. The file is locked meanwhile and, if writing fails, left empty. Raises PictureError and OSError."""
    array = np.asarray(samples)
    if not 1 <= depth <= 32:
        raise PictureError(f"{os.fsdecode(path)}: the depth {depth} is not 1 to 32")
    if array.ndim not in (2, 3) or (array.ndim == 3 and array.shape[2] != 3):
        raise PictureError(f"{os.fsdecode(path)}: the shape {array.shape} is not (height, width) or (height, width, 3)")
    if array.dtype.kind not in "iu":
        raise PictureError(f"{os.fsdecode(path)}: {array.dtype} is no integer type")
    if array.size and (array.min() < 0 or int(array.max()) >> 8 * _bytes_of(depth)):
        raise PictureError(f"{os.fsdecode(path)}: {array.min()} to {array.max()} does not fit {_bytes_of(depth)} bytes")
    _write_locked(path, _header(array, depth) + _sample_bytes(array, depth))


def _header(array: npt.NDArray[Any], depth: int) -> bytes:
    kind = "5" if array.ndim == 2 else "6"
    maximum = 0 if kind == "6" and depth == 32 else (1 << depth) - 1  # kept: 0 for 32 bits in P6
    return f"P{kind}\n# Created by ZEMBRO DPU Model\n{array.shape[1]} {array.shape[0]}\n{maximum}\n".encode()


def _sample_bytes(array: npt.NDArray[Any], depth: int) -> bytes:
    size = _bytes_of(depth)
    if size != 3:
        return array.astype(f">u{size}").tobytes()
    return array.astype(">u4", order="C").reshape(-1).view(np.uint8).reshape(-1, 4)[:, 1:].tobytes()


def _write_locked(path: Path, data: bytes) -> None:
    """A file that another program is still reading is waited for, and emptied only under the lock."""
    with open(os.open(path, os.O_WRONLY | os.O_CREAT | os.O_CLOEXEC, 0o666), "wb", buffering=0) as file:
        regular = stat.S_ISREG(os.fstat(file.fileno()).st_mode)
        if regular:
            fcntl.flock(file, fcntl.LOCK_EX)
            file.truncate(0)
        try:
            rest = memoryview(data)
            while rest:
                rest = rest[file.write(rest) :]
        except BaseException as error:
            if regular:
                file.truncate(0)
            if isinstance(error, OSError):
                error.filename = os.fsdecode(path)  # as in the errors of open
            raise
