// Packed tiles: rows in blocks of 64 samples, a byte with the bits a sample takes in front of each. From 128 on the
// samples are differences to the one before, folded: 0, -1, 1, -2 ... are 0, 1, 2, 3 ...

const BLOCK = 64;
const FOLDED = 128;

/** Reads `count` numbers of `width` bits, low bits first, into `out`. */
function readBits(bytes, at, width, count, out) {
  let held = 0;
  let bits = 0;
  const size = 2 ** width;
  for (let i = 0; i < count; ++i) {
    while (held < width) {
      bits += bytes[at++] * 2 ** held; // up to 40 bits: a double holds them
      held += 8;
    }
    out[i] = bits % size;
    bits = Math.floor(bits / size);
    held -= width;
  }
}

/** The same for up to 24 bits, with integers of 32. */
function readFewBits(bytes, at, width, count, out) {
  let held = 0;
  let bits = 0;
  const mask = 2 ** width - 1;
  for (let i = 0; i < count; ++i) {
    while (held < width) {
      bits |= bytes[at++] << held;
      held += 8;
    }
    out[i] = bits & mask;
    bits >>>= width;
    held -= width;
  }
}

const block = new Uint32Array(BLOCK);

/** Unpacks one row; returns the first byte behind it. `before` is the sample in front of the first. */
function unpackRow(bytes, at, out, from, width, before) {
  for (let x = 0; x < width; x += BLOCK) {
    const kind = bytes[at++];
    const count = Math.min(BLOCK, width - x);
    const bits = kind & (FOLDED - 1);
    (bits <= 24 ? readFewBits : readBits)(bytes, at, bits, count, block);
    at += (bits * count + 7) >> 3;
    for (let i = 0; i < count; ++i) {
      const value = block[i];
      before = kind < FOLDED ? value | 0 : (before + ((value >>> 1) ^ -(value & 1))) | 0;
      out[from + x + i] = before;
    }
  }
  return at;
}

/** Unpacks `count` planes of width x height samples, one behind the other. */
export function unpack(bytes, width, height, count) {
  const planes = [];
  let at = 0;
  for (let i = 0; i < count; ++i) {
    const plane = new Int32Array(width * height);
    for (let y = 0; y < height; ++y)
      at = unpackRow(bytes, at, plane, y * width, width, y === 0 ? 0 : plane[(y - 1) * width]);
    planes.push(plane);
  }
  return planes;
}
