"""Memory of large results that is used again."""

from __future__ import annotations

import ctypes
import weakref
from collections import deque
from math import prod

import numpy as np
import numpy.typing as npt

_Samples = npt.NDArray[np.uint16]
_LARGE = 1 << 19  # samples: what a C library takes from the system anew each time


class ResultMemory:
    """Arrays whose memory serves a later result once nothing refers to them: fresh pages would take a fifth of the time
    of a run. Holds what the results of one size of picture need that were in use at once."""

    def __init__(self) -> None:
        self._size = (0, 0)
        self._free: dict[int, deque[_Samples]] = {}

    def arrays(self, height: int, width: int) -> tuple[_Samples, _Samples, _Samples]:
        """One of three channels, two of one."""
        if self._size != (height, width):
            self._size, self._free = (height, width), {}
        return self._array((height, width, 3)), self._array((height, width)), self._array((height, width))

    def _array(self, shape: tuple[int, ...]) -> _Samples:
        count = prod(shape)
        if count < _LARGE:
            return np.empty(shape, np.uint16)
        free = self._free.setdefault(count, deque())
        owner = free.pop() if free else np.empty(count, np.uint16)
        lease = (ctypes.c_uint16 * count).from_buffer(owner.data)
        weakref.finalize(lease, free.append, owner).atexit = False  # lives as long as any view of the array below
        return np.frombuffer(memoryview(lease), np.uint16).reshape(shape)
