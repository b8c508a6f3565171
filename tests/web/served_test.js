// What the server lets through, when it ends, and a run of twelve megapixels.

import assert from 'node:assert/strict';
import { once } from 'node:events';
import { mkdirSync } from 'node:fs';
import { get } from 'node:http';
import { networkInterfaces } from 'node:os';
import { join } from 'node:path';
import { it } from 'node:test';

import { eventually, Look } from './browser.js';
import { call, makePlanes, putRun, readPicture, room, samplesAt, serve } from './runs.js';

/** The status of an answer; 0 when there is none. */
const status = (url, path, headers = {}, hostname = '127.0.0.1') =>
  new Promise((resolve) => {
    const { port } = new URL(url);
    const request = get({ hostname, port, path, headers, agent: false }, (answer) => {
      answer.resume();
      resolve(answer.statusCode);
    });
    request.on('error', () => resolve(0));
  });

it('refuses a wrong token, other hosts, and whatever is not of the runs', async () => {
  putRun('run', makePlanes(300, 20), '');
  const { server, url } = await serve('run');
  const token = new URL(url).pathname;
  assert.match(token, /^\/[0-9a-f]{32}\/$/);
  const wrong = token.replace(/[0-9a-f]/, (digit) => (digit === '0' ? '1' : '0'));
  for (const [wanted, path, host] of [
    [200, token],
    [200, token, 'localhost'],
    [200, `${token}tile/0-a-0-0-0`],
    [200, `${token}tile/0-a-1-0-0`],
    [200, `${token}summary/0-a`],
    [403, '/'],
    [403, wrong],
    [403, `${wrong}tile/0-a-0-0-0`],
    [403, token, 'example.org'],
    [403, token, '127.0.0.1.example.org'],
    [403, '/etc/passwd'],
    [404, `${token}tile/0-b-0-0-0`], // one run
    [404, `${token}tile/0-d-1-0-0`],
    [404, `${token}tile/9-a-0-0-0`],
    [404, `${token}tile/0-a-0-2-0`],
    [404, `${token}tile/0-a-0-0-1`],
    [404, `${token}tile/0-a-2-0-0`],
    [404, `${token}summary/9-a`],
    [404, `${token}run/raw.ppm`],
    [404, `${token}tile/../run/raw.ppm`],
    [403, `${token}../run/raw.ppm`.replace(token, '/')],
  ])
    assert.equal(await status(url, path, host ? { Host: host } : {}), wanted, `${path} ${host ?? ''}`);
  for (const { address } of Object.values(networkInterfaces())
    .flat()
    .filter((of) => !of.internal))
    assert.equal(await status(url, token, { Host: '127.0.0.1' }, address), 0, `${address} is no way in`);
  server.kill('SIGHUP'); // the terminal is closed
  assert.deepEqual(await once(server, 'exit'), [null, 'SIGHUP']);
  const next = await serve('run');
  assert.notEqual(new URL(next.url).pathname, token);
  next.server.kill('SIGINT');
  assert.deepEqual(await once(next.server, 'exit'), [null, 'SIGINT']);
});

it('shows twelve megapixels with all debug images within seconds, and moves them smoothly', async () => {
  mkdirSync(join(room, 'big'));
  call('cfatool', 'chart', 'scene', '--size', '4000x3000', '--bayer', '0', '-o', 'big/raw.ppm');
  for (const block of ['cfa', 'cmodel_top']) call('cfatool', 'regs', 'defaults', block, '-o', `big/${block}.ini`);
  const files = ['raw', 'out', 'out_dc', 'out_sg'].map((name) => `big/${name}.ppm`);
  call('cfa_cmodel', 'big/cfa.ini', 'big/log', '2', '1', 'big', 'big/cmodel_top.ini', ...files);
  const { url } = await serve('big');
  const start = Date.now();
  const look = await Look.at(url);
  const middle = await look.placeOfMiddle();
  const places = Array.from({ length: 60 }, (_, i) => [middle[0], middle[1] - 300 + 10 * i]);
  await eventually(async () => new Set((await look.coloursAt(places)).map(String)).size > 20, true);
  const first = Date.now() - start;
  const [x, y] = [1234, 2345];
  await look.goTo(x, y);
  const outputs = Object.fromEntries(files.map((file) => [file, samplesAt(readPicture(file), x, y).join(' ')]));
  const wanted = ['raw', 'out_dc', 'out_sg', 'out'].map((name) => [outputs[`big/${name}.ppm`]]);
  const seen = async () => {
    const list = await look.list();
    return ['raw', 'out_dc', 'out_sg', 'out'].map((name) => list[name]);
  };
  await eventually(seen, wanted);
  const rate = await look.frameRate();
  console.log(`first picture after ${first} ms, ${rate.toFixed(0)} frames a second`);
  assert.ok(first < 4000, `${first} ms`); // 1 s on an idle machine
  assert.ok(rate > 15, `${rate} frames a second`); // 30 on an idle machine
  await look.close();
});
