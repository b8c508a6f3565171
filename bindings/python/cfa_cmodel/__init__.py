"""The colour-filter-array block of a camera image-signal processor, bit-exact, on numpy arrays.

    from cfa_cmodel import Block, read_picture, write_picture
    block = Block(bayer="rggb", edge_tol=300)
    out = block(read_picture("raw.ppm"))
    write_picture("out.ppm", out.rgb)
"""

from .bayer import mosaic
from .block import Block, Result
from .errors import (
    ArgumentError,
    CfaError,
    FileError,
    IniError,
    MissingFileError,
    NoMemoryError,
    PictureError,
    PlaneError,
    RegisterError,
    SizeError,
)
from .pictures import PictureInfo, picture_info, read_picture, write_picture
from .tables import REGISTERS, PlaneInfo, Register, planes
from .version import VERSION as __version__

__all__ = [
    "ArgumentError",
    "Block",
    "CfaError",
    "FileError",
    "IniError",
    "MissingFileError",
    "NoMemoryError",
    "PictureError",
    "PictureInfo",
    "PlaneError",
    "PlaneInfo",
    "REGISTERS",
    "Register",
    "RegisterError",
    "Result",
    "SizeError",
    "__version__",
    "mosaic",
    "picture_info",
    "planes",
    "read_picture",
    "write_picture",
]
