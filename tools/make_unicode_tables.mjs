// SPDX-License-Identifier: MIT

// Makes the Unicode 5.1 tables of the pattern compiler and matcher from the npm package that
// tools/unicode_package.mjs fetches.
//
//   node tools/make_unicode_tables.mjs
//
// A test makes the file again and compares it to the byte.
//
// The tables answer for every code point what a walk over the database's records would:
//
// - The database lists 19316 characters one by one, and ten ranges by their ends. A code point's
//   class says which category it has and how it is known: listed, in a range, or neither.
// - Classes, scripts and lower-case mappings lie in pages of 64 code points, equal pages once.
//   Where a table ends, what follows is decided by comparisons (kMainEnd, kTagsFirst).
// - A script's ranges are a list of its own, in the order of the database, cut where the category
//   changes (Lu, Ll and Lt being one).

import { writeFileSync } from 'node:fs';
import { dirname, join } from 'node:path';
import { fileURLToPath } from 'node:url';
import { fetchPackage, load } from './unicode_package.mjs';

const kRoot = join(dirname(fileURLToPath(import.meta.url)), '..');
const kFirstLine = '// SPDX-License-Identifier: MIT AND Unicode-3.0\n// Made by: node tools/make_unicode_tables.mjs\n// clang-format off\n';
const kCodePoints = 0x110000;

// ---- What must come out.

const kRecordCount = 19316;
const kLastRecord = 0xE01EF;
const kBlockCount = 171;
const kScriptCount = 77;
const kPairCounts = { Common: 530, Latin: 42, Greek: 51, Cyrillic: 18, Inherited: 22 };

function demand(condition, what) {
  if (!condition) {
    throw new Error(`the data is not as expected: ${what}`);
  }
}

function demandNumber(found, expected, what) {
  demand(found === expected, `${what}: ${found} for ${expected}`);
}

// ---- The shape of the tables, as regexp/characters/unicode_tables.h has it.

const kPageBits = 6;
const kMainEnd = 0x30000;
const kTagsFirst = 0xE0000;
const kTagsEnd = 0xE0200;

const kCategories = {
  Ll: ['Lowercase_Letter', 0x81], Lu: ['Uppercase_Letter', 0x82], Lt: ['Titlecase_Letter', 0x84],
  Lm: ['Modifier_Letter', 0x88], Lo: ['Other_Letter', 0x90],
  Mn: ['Nonspacing_Mark', 0x101], Mc: ['Spacing_Mark', 0x102], Me: ['Enclosing_Mark', 0x104],
  Zs: ['Space_Separator', 0x201], Zl: ['Line_Separator', 0x202],
  Zp: ['Paragraph_Separator', 0x204],
  Sm: ['Math_Symbol', 0x401], Sc: ['Currency_Symbol', 0x402], Sk: ['Modifier_Symbol', 0x404],
  So: ['Other_Symbol', 0x408],
  Nd: ['Decimal_Number', 0x801], Nl: ['Letter_Number', 0x802], No: ['Other_Number', 0x804],
  Pd: ['Dash_Punctuation', 0x1001], Ps: ['Open_Punctuation', 0x1002],
  Pe: ['Close_Punctuation', 0x1004], Pi: ['Initial_Punctuation', 0x1008],
  Pf: ['Final_Punctuation', 0x1010], Pc: ['Connector_Punctuation', 0x1020],
  Po: ['Other_Punctuation', 0x1040],
  Cc: ['Control', 0x2001], Cf: ['Format', 0x2002],
};
// Known by ranges alone, or not at all.
const kFurtherClasses = {
  RangeLo: 0x90, RangeCs: 0x2008, RangeCo: 0x2004, FarRangeCo: 0x2004, Unlisted: 0x2010,
  Beyond: 0x2010,
};
const kClassNames = [...Object.keys(kCategories), ...Object.keys(kFurtherClasses)];

const kRanges = [
  [0x3400, 0x4DB5, 'RangeLo'], [0x4E00, 0x9FC3, 'RangeLo'], [0xAC00, 0xD7A3, 'RangeLo'],
  [0xD800, 0xDFFF, 'RangeCs'], [0xE000, 0xF8FF, 'RangeCo'], [0x20000, 0x2A6D6, 'RangeLo'],
  [0xF0000, 0xFFFFD, 'FarRangeCo'], [0x100000, 0x10FFFD, 'FarRangeCo'],
];

// The order in which the names are looked up.
const kScripts = `Common Latin Greek Cyrillic Armenian Hebrew Arabic Syriac Thaana Devanagari
  Bengali Gurmukhi Gujarati Oriya Tamil Telugu Kannada Malayalam Sinhala Thai Lao Tibetan Myanmar
  Georgian Hangul Ethiopic Cherokee Canadian_Aboriginal Ogham Runic Khmer Mongolian Hiragana
  Katakana Bopomofo Han Yi Old_Italic Gothic Deseret Inherited Tagalog Hanunoo Buhid Tagbanwa Limbu
  Tai_Le Linear_B Ugaritic Shavian Osmanya Cypriot Braille Buginese Coptic New_Tai_Lue Glagolitic
  Tifinagh Syloti_Nagri Old_Persian Kharoshthi Balinese Cuneiform Phoenician Phags_Pa Nko Sundanese
  Lepcha Ol_Chiki Vai Saurashtra Kayah_Li Rejang Lycian Carian Lydian Cham`.split(/\s+/);

// ---- Reading the package.

// The category's long name for each code point, and whether a range gives it.
async function readCategories(unpacked) {
  const longNames = await load(unpacked, 'General_Category/index.mjs');
  const classOfName = new Map(Object.entries(kCategories).map(
    ([name, [longName]]) => [longName, kClassNames.indexOf(name)]));
  classOfName.set('Unassigned', kClassNames.indexOf('Unlisted'));
  const classes = new Uint8Array(kCodePoints);
  for (let codePoint = 0; codePoint < kCodePoints; ++codePoint) {
    classes[codePoint] = classOfName.get(longNames.get(codePoint)) ?? 255;
  }
  for (const [first, last, name] of kRanges) {
    const expected = { Lo: 'Other_Letter', Cs: 'Surrogate', Co: 'Private_Use' }[name.slice(-2)];
    for (let codePoint = first; codePoint <= last; ++codePoint) {
      demand(longNames.get(codePoint) === expected, `range of ${codePoint.toString(16)}`);
      classes[codePoint] = kClassNames.indexOf(name);
    }
  }
  demand(!classes.includes(255), 'a category that neither records nor ranges give');
  return { longNames, classes };
}

const isListed = (classNumber) => classNumber < Object.keys(kCategories).length;

function checkRecords(classes) {
  demandNumber(classes.filter(isListed).length, kRecordCount, 'number of records');
  demandNumber(classes.findLastIndex(isListed), kLastRecord, 'last record');
  for (let codePoint = kLastRecord + 1; codePoint < kCodePoints; ++codePoint) {
    if (kClassNames[classes[codePoint]] === 'Unlisted') {
      classes[codePoint] = kClassNames.indexOf('Beyond');
    }
  }
}

async function readLowerCase(unpacked, classes) {
  const mapping = await load(unpacked, 'Simple_Case_Mapping/Lowercase/code-points.mjs');
  const deltas = new Int32Array(kCodePoints);
  for (const [from, to] of mapping) {
    demand(isListed(classes[from]), 'a mapping of a character that is not listed');
    deltas[from] = to - from;
  }
  return deltas;
}

async function readScripts(unpacked, longNames) {
  const known = (await load(unpacked, 'index.mjs')).Script.filter((name) => name !== 'Unknown');
  const differing = [...kScripts.filter((name) => !known.includes(name)),
    ...known.filter((name) => !kScripts.includes(name))];
  demand(differing.length === 0, `scripts: ${differing.join(' ')}`);
  demandNumber(kScripts.length, kScriptCount, 'number of scripts');
  const cased = ['Uppercase_Letter', 'Lowercase_Letter', 'Titlecase_Letter'];
  const kind = (codePoint) =>
    cased.includes(longNames.get(codePoint)) ? 'cased' : longNames.get(codePoint);
  const lists = [];
  for (const name of kScripts) {
    const list = [];
    for (const { begin, end } of await load(unpacked, `Script/${name}/ranges.mjs`)) {
      for (let codePoint = begin; codePoint < end; ++codePoint) {
        if (codePoint === begin || kind(codePoint) !== kind(codePoint - 1)) {
          list.push([codePoint, codePoint]);
        }
        list.at(-1)[1] = codePoint;
      }
    }
    demandNumber(list.length, kPairCounts[name] ?? list.length, `pairs of ${name}`);
    lists.push(list);
  }
  return lists;
}

async function readBlocks(unpacked) {
  const blocks = [];
  for (const name of (await load(unpacked, 'index.mjs')).Block) {
    const [{ begin, end }] = await load(unpacked, `Block/${name}/ranges.mjs`);
    // As the list of blocks writes them, but for spaces and hyphens.
    const written = name.replace('_And_', '_and_').replace('_For_', '_for_')
      .replace('Phags_Pa', 'Phags_pa').replaceAll('_', '');
    blocks.push({ name: `In${written}`, begin, end });
  }
  demandNumber(blocks.length, kBlockCount, 'number of blocks');
  return blocks.sort((one, other) => one.begin - other.begin);
}

// ---- Packing.

// Pages of equal content once; the page number of each stretch beside them.
function paged(values) {
  const size = 1 << kPageBits;
  const numbers = new Map();
  const pageOf = [];
  for (let start = 0; start < values.length; start += size) {
    const page = values.slice(start, start + size).join();
    if (!numbers.has(page)) {
      numbers.set(page, numbers.size);
    }
    pageOf.push(numbers.get(page));
  }
  demand(numbers.size <= 256, 'page numbers of one byte');
  return { pageOf, pages: [...numbers.keys()].flatMap((page) => page.split(',').map(Number)) };
}

// The stretches of code points that the tables of pages cover, one after the other.
const covered = (values) =>
  [...values.slice(0, kMainEnd), ...values.slice(kTagsFirst, kTagsEnd)];

function checkUncovered(classes, scriptOf) {
  const expected = (codePoint) => (codePoint < kTagsFirst ? /^Unlisted$/ : /^(FarRangeCo|Beyond)$/);
  for (let codePoint = kMainEnd; codePoint < kCodePoints; ++codePoint) {
    if (codePoint < kTagsFirst || codePoint >= kTagsEnd) {
      demand(expected(codePoint).test(kClassNames[classes[codePoint]]) &&
        scriptOf[codePoint] === kScriptCount, 'an entry outside the covered stretches');
    }
  }
}

// First code point and size of a block, both multiples of 16, in one word.
function packBlock({ begin, end }) {
  demand(begin % 16 === 0 && end % 16 === 0 && end - begin <= 0x10000, 'bounds of blocks');
  return ((begin / 16) << 12) | ((end - begin) / 16 - 1);
}

// ---- Writing.

function wrapped(items, separator = ',') {
  const lines = [''];
  for (const item of items) {
    if (lines.at(-1).length + item.length + separator.length > 100) {
      lines.push('');
    }
    lines[lines.length - 1] += item + separator;
  }
  return lines.join('\n');
}

const array = (declaration, items) =>
  `constexpr ${declaration}[] = {\n${wrapped(items.map(String))}\n};\n\n`;

// Names each with a closing brace after it.
const nameList = (declaration, names) =>
  `constexpr char ${declaration}[] =\n${names.map((name) => `    "${name}}"`).join('\n')};\n\n`;

function writeTables({ classes, deltas, scripts, scriptOf, blocks }) {
  const category = paged(covered(classes));
  const script = paged(covered(scriptOf));
  const foldEnd = (deltas.findLastIndex((delta) => delta !== 0) | ((1 << kPageBits) - 1)) + 1;
  const foldDeltas = [...new Set(deltas)];
  const fold = paged([...deltas.slice(0, foldEnd)].map((delta) => foldDeltas.indexOf(delta)));
  const scriptFirst = [0];
  scripts.forEach((list) => scriptFirst.push(scriptFirst.at(-1) + list.length));
  const masks = [...Object.values(kCategories).map(([, mask]) => mask),
    ...Object.values(kFurtherClasses)];
  const constants = Object.entries({
    kPageBits, kMainEnd, kTagsFirst, kTagsEnd, kLastRecord, kFoldEnd: foldEnd, kBlockCount,
    kScriptCount, kScriptCommon: kScripts.indexOf('Common'), kScriptLatin: kScripts.indexOf('Latin'),
    ...Object.fromEntries(Object.keys(kFurtherClasses).map(
      (name) => [`kClass${name}`, kClassNames.indexOf(name)])),
  }).map(([name, value]) => `static_assert(${name} == ${value}, "made for other tables");\n`);
  return `${kFirstLine}
// The tables of Unicode 5.1, from data of the Unicode Character Database; see NOTICE.

#include "regexp/characters/unicode_tables.h"

namespace vekch::regexp {

${constants.join('')}
${array('uint16_t kClassCategory', masks)}` +
    array('uint8_t kAsciiClass', [...classes.slice(0, 128)]) +
    array('uint8_t kCategoryPageOf', category.pageOf) +
    array('uint8_t kCategoryPages', category.pages) +
    array('uint8_t kScriptPageOf', script.pageOf) +
    array('uint8_t kScriptPages', script.pages) +
    array('uint8_t kFoldPageOf', fold.pageOf) +
    array('uint8_t kFoldPages', fold.pages) +
    array('int32_t kFoldDeltas', foldDeltas) +
    array('ScriptRange kScriptRanges', scripts.flat().map(([first, last]) => `{${first},${last}}`)) +
    array('uint16_t kScriptFirst', scriptFirst) +
    nameList('kScriptNames', kScripts) +
    array('uint32_t kBlockBounds', blocks.map(packBlock)) +
    nameList('kBlockNames', blocks.map(({ name }) => name)) +
    '}  // namespace vekch::regexp\n';
}

// The files' paths in the tree and their texts.
export async function makeFiles(unpacked) {
  const { longNames, classes } = await readCategories(unpacked);
  checkRecords(classes);
  const deltas = await readLowerCase(unpacked, classes);
  const scripts = await readScripts(unpacked, longNames);
  const scriptOf = new Uint8Array(kCodePoints).fill(kScriptCount);
  scripts.forEach((list, number) => list.forEach(([first, last]) => {
    demand(scriptOf.slice(first, last + 1).every((value) => value === kScriptCount),
      'a code point in two scripts');
    scriptOf.fill(number, first, last + 1);
  }));
  checkUncovered(classes, scriptOf);
  const data = { classes, deltas, scripts, scriptOf, blocks: await readBlocks(unpacked) };
  return {
    'regexp/characters/unicode_5_1_tables.cpp': writeTables(data),
  };
}

if (process.argv[1] === fileURLToPath(import.meta.url)) {
  const unpacked = fetchPackage();
  if (unpacked === null) {
    throw new Error('npm or its registry is not at hand');
  }
  for (const [path, text] of Object.entries(await makeFiles(unpacked))) {
    writeFileSync(join(kRoot, path), text);
  }
}
