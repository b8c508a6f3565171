"""The patterns of the colour-filter array, mosaics of pictures, and arrays of samples."""

from __future__ import annotations

import operator
from typing import SupportsIndex, Union

import numpy as np
import numpy.typing as npt

from .errors import ArgumentError, RegisterError

Bayer = Union[str, SupportsIndex]
NAMES = ("bggr", "gbrg", "grbg", "rggb")  # of the ids 0 to 3

# A letter per site, rows with a blank between. W: a site that none of the three colours has to itself.
PATTERNS = (
    "BG GR",
    "GB RG",
    "GR BG",
    "RG GB",
    *4 * ("WWWW BBBB BBBB BBBB",),
    "GRGB WGWG GBGR WGWG",
    "RGBG GWGW BGRG GWGW",
    "GBGR WGWG GRGB WGWG",
    "BGRG GWGW RGBG GWGW",
    "WGWG GRGB WGWG GBGR",
    "GWGW RGBG GWGW BGRG",
    "GWGW BGRG GWGW RGBG",
    "WGWG GBGR WGWG GRGB",
)


def bayer_id(bayer: Bayer) -> int:
    """The id of a pattern, 0 to 15, given as such or by one of the four names. Raises RegisterError."""
    if isinstance(bayer, str):
        if bayer.lower() not in NAMES:
            raise RegisterError(f"bayer: '{bayer}' is none of {', '.join(NAMES)}")
        return NAMES.index(bayer.lower())
    number = operator.index(bayer)
    if not 0 <= number < len(PATTERNS):
        raise RegisterError(f"bayer: {number} is not 0 to {len(PATTERNS) - 1}")
    return number


def as_samples(name: str, array: npt.ArrayLike) -> npt.NDArray[np.uint16]:
    """An array as uint16 in the order of bytes of this machine, itself if it is that already. Other integers are
    converted if they fit. Raises ArgumentError."""
    samples = np.asarray(array)
    if samples.dtype == np.uint16 and samples.flags.aligned:
        return samples
    if samples.dtype.kind not in "iu":
        raise ArgumentError(f"{name}: {samples.dtype} is no integer type")
    if samples.size and (samples.min() < 0 or samples.max() > 0xFFFF):
        raise ArgumentError(f"{name}: {samples.min()} to {samples.max()} is not 0 to 65535")
    return samples.astype(np.uint16)


def mosaic(rgb: npt.ArrayLike, bayer: Bayer) -> npt.NDArray[np.uint16]:
    """The mosaic of a picture (height, width, 3): at each site the colour that the pattern has there. Sites of 4 x 4
    patterns that belong to no single colour take (red + 2 green + blue) / 4."""
    picture = as_samples("rgb", rgb)
    if picture.ndim != 3 or picture.shape[2] != 3:
        raise ArgumentError(f"rgb: the shape {picture.shape} is not (height, width, 3)")
    rows = PATTERNS[bayer_id(bayer)].split()
    period = len(rows)
    result = np.empty(picture.shape[:2], np.uint16)
    for y, row in enumerate(rows):
        for x, letter in enumerate(row):
            sites = picture[y::period, x::period]
            if letter == "W":
                result[y::period, x::period] = sites.astype(np.uint32) @ np.array([1, 2, 1], np.uint32) // 4
            else:
                result[y::period, x::period] = sites[..., "RGB".index(letter)]
    return result
