// SPDX-License-Identifier: MIT

// Makes the generated files again and compares them to the byte; then compares what the library
// answers for every code point with the sets of the package, read here without the generator.
//
//   node unicode_data_test.mjs COMMAND...     the command that runs properties_test.cpp

import { spawnSync } from 'node:child_process';
import { readFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { makeFiles } from '../tools/make_unicode_tables.mjs';
import { fetchPackage, load } from '../tools/unicode_package.mjs';

const kRoot = join(dirname(fileURLToPath(import.meta.url)), '..');
const kCodePoints = 0x110000;
const kLastRecord = 0xE01EF;

const kShortNames = {
  L: 'Letter', Ll: 'Lowercase_Letter', Lu: 'Uppercase_Letter', Lt: 'Titlecase_Letter',
  Lm: 'Modifier_Letter', Lo: 'Other_Letter', 'L&': 'Cased_Letter', M: 'Mark',
  Mn: 'Nonspacing_Mark', Mc: 'Spacing_Mark', Me: 'Enclosing_Mark', Z: 'Separator',
  Zs: 'Space_Separator', Zl: 'Line_Separator', Zp: 'Paragraph_Separator', S: 'Symbol',
  Sm: 'Math_Symbol', Sc: 'Currency_Symbol', Sk: 'Modifier_Symbol', So: 'Other_Symbol',
  N: 'Number', Nd: 'Decimal_Number', Nl: 'Letter_Number', No: 'Other_Number', P: 'Punctuation',
  Pd: 'Dash_Punctuation', Ps: 'Open_Punctuation', Pe: 'Close_Punctuation',
  Pi: 'Initial_Punctuation', Pf: 'Final_Punctuation', Pc: 'Connector_Punctuation',
  Po: 'Other_Punctuation', C: 'Other', Cc: 'Control', Cf: 'Format', Co: 'Private_Use',
  Cs: 'Surrogate', Cn: 'Unassigned',
};

const unpacked = fetchPackage();
if (unpacked === null) {
  console.log("SKIPPED: npm or its registry isn't at hand");
  process.exit();
}

let failures = 0;
function expectEqual(actual, expected, what) {
  if (actual === expected) {
    return;
  }
  ++failures;
  const wrong = expected.split(' ').findIndex((word, i) => word !== actual?.split(' ')[i]);
  console.error(`${what}: "${actual?.split(' ')[wrong]}" for "${expected.split(' ')[wrong]}"`);
}

async function readSet(path) {
  const members = new Uint8Array(kCodePoints);
  for (const { begin, end } of await load(unpacked, `${path}/ranges.mjs`)) {
    members.fill(1, begin, end);
  }
  return members;
}

function listed(name, isMember) {
  let line = name;
  for (let first = 0; first < kCodePoints; ++first) {
    let end = first;
    while (end < kCodePoints && isMember(end)) {
      ++end;
    }
    if (end > first) {
      line += ` ${first.toString(16)}-${(end - 1).toString(16)}`;
      first = end;
    }
  }
  return line;
}

const ideographs = [[0x3400, 0x4DB5], [0x4E00, 0x9FC3], [0xAC00, 0xD7A3], [0x20000, 0x2A6D6]];
const [unassigned, privateUse, surrogates] = await Promise.all(
  ['Unassigned', 'Private_Use', 'Surrogate'].map((name) => readSet(`General_Category/${name}`)));

// The categories' answers, with what the database's form made of them: ranges and unassigned code
// points count as Cn both ways, and after the last record only private use has any category.
async function expectedCategory(name) {
  const set = await readSet(`General_Category/${kShortNames[name]}`);
  const isRange = (x) => privateUse[x] || surrogates[x] ||
    ideographs.some(([first, last]) => first <= x && x <= last);
  const answer = (x, negated) => {
    if (unassigned[x]) {
      return name === 'Cn' && x <= kLastRecord;
    }
    if (name === 'Cn' && isRange(x)) {
      return negated || x <= kLastRecord;
    }
    return Boolean(set[x]) !== negated;
  };
  return [listed(`p{${name}}`, (x) => answer(x, false)),
    listed(`P{${name}}`, (x) => answer(x, true))];
}

async function expectedScript(name) {
  const set = await readSet(`Script/${name}`);
  return listed(`p{${name}}`, (x) => set[x]);
}

async function expectedFolding() {
  const lower = await load(unpacked, 'Simple_Case_Mapping/Lowercase/code-points.mjs');
  let line = 'folding';
  for (let x = 0; x < kCodePoints; ++x) {
    const folded = x > kLastRecord && !privateUse[x] ? 0 : lower.get(x) ?? x;
    line += folded === x ? '' : ` ${x.toString(16)}-${folded.toString(16)}`;
  }
  return line;
}

// Blocks in order of code points, their names without what spellings differ in. The beginning of
// a name is enough to find a block, so that some find an earlier one.
async function expectedBlocks(names) {
  const blocks = await Promise.all(names.map(async (name) => {
    const [{ begin, end }] = await load(unpacked, `Block/${name}/ranges.mjs`);
    return { name: `in${name.replaceAll('_', '').toLowerCase()}`, begin, end };
  }));
  blocks.sort((one, other) => one.begin - other.begin);
  return blocks.reduce((line, { name }) => {
    const { begin, end } = blocks.find((block) => block.name.startsWith(name));
    return `${line} ${name}}${begin.toString(16)}-${(end - 1).toString(16)}`;
  }, 'blocks');
}

for (const [path, text] of Object.entries(await makeFiles(unpacked))) {
  expectEqual(readFileSync(join(kRoot, path), 'utf8') === text ? 'same' : 'other', 'same', path);
}

const names = await load(unpacked, 'index.mjs');
const scripts = names.Script.filter((name) => name !== 'Unknown');
const [program, ...leading] = process.argv.slice(2);
const answers = spawnSync(program, [...leading, '--gtest_filter=MatchPropertyItemTest.*'],
  { encoding: 'utf8', maxBuffer: 1 << 28, env: { ...process.env, VEKCH_PRINT_ANSWERS: '1' } });
const lines = new Map((answers.stdout ?? '').split(/\r?\n/).map((line) => [line.split(' ')[0], line]));
const expected = [
  ...(await Promise.all(Object.keys(kShortNames).map(expectedCategory))).flat(),
  ...await Promise.all(scripts.map(expectedScript)),
  await expectedFolding(),
];
for (const line of expected) {
  const what = line.split(' ')[0];
  expectEqual(lines.get(what), line, what);
}
expectEqual(lines.get('blocks')?.toLowerCase(), await expectedBlocks(names.Block), 'blocks');
process.exitCode = failures === 0 ? 0 : 1;
