"""A mosaic as a minimal DNG: one uncompressed strip of 16-bit samples, the tags a raw converter asks for, no more."""

import array
import struct

SHORT, LONG, BYTE, ASCII, SRATIONAL = 3, 4, 1, 2, 10
SIZES = {BYTE: 1, ASCII: 1, SHORT: 2, LONG: 4, SRATIONAL: 8}
BLUE, GREEN, RED = 2, 1, 0
BGGR = bytes([BLUE, GREEN, GREEN, RED])
IDENTITY = [1, 1, 0, 1, 0, 1, 0, 1, 1, 1, 0, 1, 0, 1, 0, 1, 1, 1]  # 3 x 3, numerators and denominators
BLOCK = 1 << 20


def read_header(file):
    """Width, height and maximum of a P5 picture; the file stands at the first sample then."""
    words = []
    while len(words) < 4:
        line = file.readline()
        if not line:
            raise ValueError("not a P5 picture")
        words += line.split(b"#")[0].split()
    if words[0] != b"P5":
        raise ValueError("not a P5 picture")
    return tuple(int(word) for word in words[1:])


def packed(kind, values):
    if kind in (BYTE, ASCII):
        return bytes(values)
    return struct.pack("<%d%s" % (len(values), {SHORT: "H", LONG: "I", SRATIONAL: "i"}[kind]), *values)


def directory(tags, start):
    """The one directory of a little-endian TIFF file and the values that do not fit an entry behind it."""
    tags = sorted(tags)
    behind = start + 2 + 12 * len(tags) + 4
    entries, values = struct.pack("<H", len(tags)), b""
    for tag, kind, content in tags:
        data = packed(kind, content)
        entries += struct.pack("<HHI", tag, kind, len(data) // SIZES[kind])
        if len(data) <= 4:
            entries += data.ljust(4, b"\0")
        else:
            entries += struct.pack("<I", behind + len(values))
            values += data + b"\0" * (len(data) % 2)
    return entries + struct.pack("<I", 0) + values


def write(mosaic_path, dng_path):
    """Writes the BGGR mosaic of a P5 file as a DNG."""
    with open(mosaic_path, "rb") as mosaic, open(dng_path, "wb") as dng:
        width, height, maximum = read_header(mosaic)
        tags = [
            (254, LONG, [0]),  # the main picture
            (256, LONG, [width]),
            (257, LONG, [height]),
            (258, SHORT, [16]),  # bits a sample
            (259, SHORT, [1]),  # not compressed
            (262, SHORT, [32803]),  # colour filter array
            (271, ASCII, b"Bench\0"),
            (272, ASCII, b"Mosaic\0"),
            (273, LONG, [0]),  # where the strip begins
            (274, SHORT, [1]),  # upright
            (277, SHORT, [1]),  # samples a pixel
            (278, LONG, [height]),  # rows of the strip
            (279, LONG, [2 * width * height]),
            (284, SHORT, [1]),
            (33421, SHORT, [2, 2]),  # the pattern's size and colours
            (33422, BYTE, BGGR),
            (50706, BYTE, [1, 1, 0, 0]),  # DNG 1.1
            (50708, ASCII, b"Bench Mosaic\0"),
            (50717, LONG, [maximum]),
            (50721, SRATIONAL, IDENTITY),  # camera colours are XYZ
        ]
        begin = 8 + len(directory(tags, 8))
        tags = [(tag, kind, [begin] if tag == 273 else content) for tag, kind, content in tags]
        dng.write(struct.pack("<2sHI", b"II", 42, 8) + directory(tags, 8))
        while block := mosaic.read(BLOCK):
            samples = array.array("H", block)
            samples.byteswap()  # big-endian there, little-endian here
            dng.write(samples.tobytes())
