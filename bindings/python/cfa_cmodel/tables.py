"""What the library says of its registers and planes."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any, NamedTuple

from ._library import elements, lib


@dataclass(frozen=True)
class Register:
    """A register: Block.reg_cfa_edge_tol is what is known of it, block.reg_cfa_edge_tol its value on a block."""

    key: str  # as in INI files
    section: str  # of INI files
    meaning: str
    min: int
    max: int
    reset: int
    bits: int
    signed: bool

    def __post_init__(self) -> None:
        kind = "signed" if self.signed else "unsigned"
        text = f"{self.meaning}\n\n{self.min} to {self.max} ({self.bits} bits, {kind}), {self.reset} at reset."
        object.__setattr__(self, "__doc__", text)

    @property
    def short(self) -> str:
        """The key without reg_cfa_ or reg_."""
        return self.key.removeprefix("reg_").removeprefix("cfa_")

    def __get__(self, block: Any, owner: Any = None) -> Any:
        return self if block is None else block._get(self.key)

    def __set__(self, block: Any, value: Any) -> None:
        block._set(self.key, value)


REGISTERS: tuple[Register, ...] = tuple(
    Register(
        r.key.decode(), r.section.decode(), r.meaning.decode(), r.min, r.max, r.reset, r.bits, r.is_signed != 0
    )
    for r in elements(lib.cfa_register_at)
)


class PlaneInfo(NamedTuple):
    """A plane between the stages."""

    name: str
    stage: str  # the function that makes it
    format: str  # of its samples at regular input
    readers: tuple[str, ...]  # the functions that read it; none for an output
    meaning: str
    image: str  # its debug image, "" for none
    channels: int  # 1, or 3: red, green, blue


_PLANES = tuple(
    PlaneInfo(
        p.name.decode(),
        p.stage.decode(),
        p.format.decode(),
        tuple(p.readers.decode().split()),
        p.meaning.decode(),
        p.image.decode() if p.image else "",
        p.channels,
    )
    for p in elements(lib.cfa_plane_info_at)
)


def planes() -> tuple[PlaneInfo, ...]:
    """All planes in pipeline order."""
    return _PLANES
