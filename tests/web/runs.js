// Runs to look at, whose samples the tests know, and the programs.

import { spawn, spawnSync } from 'node:child_process';
import { mkdirSync, mkdtempSync, readFileSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { after } from 'node:test';

export const room = mkdtempSync(join(tmpdir(), 'cfa web ')); // the blank is wanted
const servers = [];
after(() => {
  for (const server of servers) server.kill('SIGKILL');
  rmSync(room, { recursive: true });
});
const program = (name) => join(process.env.CFA_PROGRAMS, name);

/** Runs a program in the room; gives what it prints. */
export function call(name, ...words) {
  const { status, stdout, stderr } = spawnSync(program(name), words, { cwd: room, encoding: 'utf8' });
  if (status !== 0) throw new Error(`${name} ${words.join(' ')}: ${status} ${stderr}`);
  return stdout;
}

/** Starts the server; gives its process and address. */
export async function serve(...words) {
  const server = spawn(program('cfatool'), ['view', ...words], { cwd: room, stdio: ['ignore', 'pipe', 'inherit'] });
  servers.push(server);
  const [line] = await new Promise((resolve) => server.stdout.once('data', (data) => resolve(`${data}`.split('\n'))));
  return { server, url: line };
}

/** Numbers that look random, the same every time. */
function numbers(seed) {
  let state = seed;
  return () => (state = (Math.imul(state, 1664525) + 1013904223) >>> 0);
}

function putPicture(path, { width, height, channels, samples }) {
  const bytes = Buffer.alloc(2 * samples.length);
  samples.forEach((sample, i) => bytes.writeUInt16BE(sample, 2 * i));
  writeFileSync(path, Buffer.concat([Buffer.from(`P${channels === 3 ? 6 : 5}\n${width} ${height}\n4095\n`), bytes]));
}

function putNumbers(path, { width, height, channels, samples }) {
  const shape = channels === 3 ? `${height}, ${width}, 3` : `${height}, ${width}`;
  const text = `{'descr': '<i4', 'fortran_order': False, 'shape': (${shape}), }`;
  const header = Buffer.from(`\x93NUMPY\x01\x00\x76\x00${text.padEnd(117)}\n`, 'latin1');
  writeFileSync(path, Buffer.concat([header, Buffer.from(Int32Array.from(samples).buffer)]));
}

/** The planes of a run, by name: noise, a slope, codes, and signed numbers up to both ends of 32 bits. */
export function makePlanes(width, height) {
  const plane = (channels, sample) => ({
    width,
    height,
    channels,
    samples: Array.from({ length: width * height * channels }, (_, i) => sample(i, i % channels)),
  });
  const [a, b, c] = [numbers(1), numbers(2), numbers(3)];
  const signed = plane(1, (i) => (i % 1000 === 7 ? b() | 0 : (b() >>> 19) - 4096));
  signed.samples.splice(0, 3, -(2 ** 31), 2 ** 31 - 1, -1);
  return {
    'raw.ppm': plane(1, () => a() >>> 20),
    'planes/AvgRGB.npy': plane(3, (i, channel) => Math.floor(i / 3 / width) + 300 * channel),
    'planes/GH_hp.npy': signed,
    'dbg_img_DirInfo.ppm': plane(1, () => c() % 3),
    'out.ppm': plane(3, (i) => Math.floor((i / 3) % width)),
  };
}

/** Another run: the same but for these samples, [plane, x, y, channel, added]. */
export function changedPlanes(planes, changes) {
  const other = Object.fromEntries(Object.entries(planes).map(([k, p]) => [k, { ...p, samples: p.samples.slice() }]));
  for (const [name, x, y, channel, added] of changes) {
    const { width, channels, samples } = other[name];
    samples[(y * width + x) * channels + channel] += added;
  }
  return other;
}

export function putRun(folder, planes, registers) {
  mkdirSync(join(room, folder, 'planes'), { recursive: true });
  for (const [name, plane] of Object.entries(planes))
    (name.endsWith('.npy') ? putNumbers : putPicture)(join(room, folder, name), plane);
  writeFileSync(join(room, folder, 'cfa.ini'), `[cfa]\n${registers}\n`);
  writeFileSync(join(room, folder, 'cmodel_top.ini'), '[cmodel_top]\nreg_img_bayerid = 2\n'); // Gr R / B Gb
}

export const samplesAt = ({ width, channels, samples }, x, y) =>
  samples.slice((y * width + x) * channels, (y * width + x + 1) * channels);

/** A picture with two bytes a sample as the program has written it. */
export function readPicture(path) {
  const bytes = readFileSync(join(room, path));
  const [head, kind, width, height] = bytes
    .subarray(0, 60)
    .toString('latin1')
    .match(/^P(\d)\s(?:#.*\n)?(\d+) (\d+)\s\d+\s/);
  const channels = kind === '6' ? 3 : 1;
  const samples = { length: width * height * channels };
  const at = (i) => bytes.readUInt16BE(head.length + 2 * i);
  samples.slice = (from, to) => Array.from({ length: to - from }, (_, i) => at(from + i));
  return { width: Number(width), height: Number(height), channels, samples };
}
