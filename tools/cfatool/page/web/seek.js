// The next pixel that differs, in raster order.

import { lookAt, showPlane } from './panes.js';
import { factorOf, lastLevel, TILE, tile } from './source.js';
import { activePlane, run, view } from './state.js';

/** Whether any sample at this place of a tile is not 0. */
const differs = (got, i) => got.planes.some((of) => of[i] !== 0);

/** The first pixel of a row of one tile that differs, from `x` on in this direction; -1 if there is none. */
function inTile(got, x, y, step) {
  for (; x >= 0 && x < got.width; x += step) if (differs(got, y * got.width + x)) return x;
  return -1;
}

/** Whether a row of pixels may hold a difference, from the first level of cells. */
async function emptyRows(plane, y) {
  if (lastLevel(plane) === 0) return false;
  const cell = Math.floor(y / factorOf(1));
  const columns = Math.ceil(plane.size[0] / (factorOf(1) * TILE));
  for (let column = 0; column < columns; ++column) {
    const got = await tile(plane, 'd', 1, column, cell >> 8);
    if (inTile(got, 0, cell & 255, 1) >= 0) return false;
  }
  return true;
}

/** The pixel, or null. It looks behind (x, y), or before it for a step of -1. */
export async function nextDifference(plane, [x, y], step) {
  const [width, height] = plane.size;
  x += step;
  for (; y >= 0 && y < height; y += step, x = step > 0 ? 0 : width - 1) {
    if (await emptyRows(plane, y)) {
      const cell = factorOf(1); // on to the edge of these rows of cells
      y = step > 0 ? Math.floor(y / cell) * cell + cell - 1 : Math.floor(y / cell) * cell;
      continue;
    }
    while (x >= 0 && x < width) {
      const column = x >> 8;
      const found = inTile(await tile(plane, 'd', 0, column, y >> 8), x & 255, y & 255, step);
      if (found >= 0) return [column * TILE + found, y];
      x = step > 0 ? (column + 1) * TILE : column * TILE - 1;
    }
  }
  return null;
}

const differing = (plane) => plane.comparable && !plane.equal && plane.differing !== 0;

/** Goes to the next or previous difference of the plane; says whether there is one. */
export async function seekDifference(step) {
  const plane = activePlane();
  const found = differing(plane) ? await nextDifference(plane, view.spot, step) : null;
  if (found) lookAt(found);
  return found !== null;
}

/** Goes to the first difference of the plane. */
export async function firstDifference() {
  const plane = activePlane();
  const found = plane.first ?? (differing(plane) ? await nextDifference(plane, [-1, 0], 1) : null);
  if (found) lookAt(found, Math.max(view.zoom, 32));
  return found !== null;
}

/** Goes to the next plane that differs, and its first difference. */
export function seekPlane(step) {
  let index = activePlane().index + step;
  while (run.planes[index] && !differing(run.planes[index])) index += step;
  if (!run.planes[index]) return false;
  showPlane(index);
  firstDifference();
  return true;
}
