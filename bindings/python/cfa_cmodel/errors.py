"""What calls raise. The text is one line, the library's own wherever the library found the fault."""

from __future__ import annotations


class CfaError(Exception):
    """Base of all. `code` is the CFA_ERROR_... of the C header, 0 where no library call was made."""

    code = 0


class ArgumentError(CfaError, ValueError):
    """An array of a shape or with samples that the block does not take, or outputs that share memory."""


class RegisterError(CfaError, ValueError):
    """No register of this name, or a value that does not fit it."""


class IniError(CfaError, ValueError):
    """A line that strict loading refuses."""


class FileError(CfaError, OSError):
    """A register file that cannot be read."""


class MissingFileError(FileError, FileNotFoundError):
    """A register file that does not exist."""


class SizeError(CfaError, ValueError):
    """A picture too small for the enabled block, or too large."""


class NoMemoryError(CfaError, MemoryError):
    """The library got no memory."""


class PlaneError(CfaError, ValueError):
    """No plane of this name."""


class PictureError(CfaError, ValueError):
    """A file that is no picture of ours, or samples that do not fit into one."""


_CLASSES = {
    -1: ArgumentError,
    -2: RegisterError,
    -3: RegisterError,
    -4: IniError,
    -5: FileError,
    -6: SizeError,
    -7: NoMemoryError,
    -8: PlaneError,
}


def error_of(code: int, line: str) -> CfaError:
    """The exception for a code of the library and its line."""
    error = _CLASSES.get(code, CfaError)(line)
    error.code = code
    return error
