// SPDX-License-Identifier: MIT

// Fetches the npm package that carries the Unicode 5.1 data, for the generator of the tables and
// for the test that compares the library's answers with it. The version is pinned, so that the
// same tables come out everywhere.

import { spawnSync } from 'node:child_process';
import { existsSync, mkdtempSync, rmSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { pathToFileURL } from 'node:url';

const kName = '@unicode/unicode-5.1.0';
const kVersion = '2.0.7';

// An unpacked package, or null when npm or its registry isn't at hand. It lies in a temporary
// folder that goes when the program ends.
export function fetchPackage() {
  const folder = mkdtempSync(join(tmpdir(), 'unicode-'));
  process.on('exit', () => rmSync(folder, { recursive: true, force: true }));
  const npm = spawnSync('npm', ['install', '--prefix', folder, '--no-save', '--ignore-scripts',
    '--no-audit', '--no-fund', '--fetch-retries=0', '--fetch-timeout=60000',
    `${kName}@${kVersion}`], { encoding: 'utf8' });
  const unpacked = join(folder, 'node_modules', kName);
  if (npm.status === 0 && existsSync(unpacked)) {
    return unpacked;
  }
  console.error(npm.error?.message ?? npm.stderr);
  return null;
}

// What the module `path` of the package exports.
export async function load(unpacked, path) {
  return (await import(pathToFileURL(join(unpacked, path)))).default;
}
