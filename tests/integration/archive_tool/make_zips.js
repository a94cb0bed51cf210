// SPDX-License-Identifier: MIT
// make_zips.js OUT OUTSIDE: writes into OUT the archives that the test extracts. OUTSIDE is the
// absolute path of a folder that none of them may touch; it stands beside the one extracted into.
'use strict';
const fs = require('fs');
const path = require('path');
const zlib = require('zlib');

const [out, outside] = process.argv.slice(2);
const FILE = 0o100000, DIRECTORY = 0o040000, LINK = 0o120000, ENCRYPTED = 1, UTF8 = 0x800;

const table = Array.from({ length: 256 }, (_, n) => {
    let c = n;
    for (let k = 0; k < 8; ++k) c = c & 1 ? 0xedb88320 ^ (c >>> 1) : c >>> 1;
    return c >>> 0;
});
const crc32 = bytes => {
    let c = 0xffffffff;
    for (const byte of bytes) c = table[(c ^ byte) & 255] ^ (c >>> 8);
    return (c ^ 0xffffffff) >>> 0;
};

// The cipher of the format's first days, with the twelve bytes that it puts before the data.
function encrypt(data, password, check) {
    const step = (c, byte) => (table[(c ^ byte) & 255] ^ (c >>> 8)) >>> 0;
    const keys = [0x12345678, 0x23456789, 0x34567890];
    const update = byte => {
        keys[0] = step(keys[0], byte);
        keys[1] = (Math.imul(keys[1] + (keys[0] & 255), 134775813) + 1) >>> 0;
        keys[2] = step(keys[2], keys[1] >>> 24);
    };
    for (const byte of Buffer.from(password)) update(byte);
    const plain = Buffer.concat([Buffer.alloc(11, 'r'), Buffer.from([check]), data]);
    return plain.map(byte => {
        const t = keys[2] | 2;
        const sent = byte ^ ((Math.imul(t, t ^ 1) >>> 8) & 255);
        update(byte);
        return sent;
    });
}

function header(signature, size, fields) {
    const bytes = Buffer.alloc(size);
    bytes.writeUInt32LE(signature, 0);
    for (const [offset, width, value] of fields) bytes.writeUIntLE(value, offset, width);
    return bytes;
}

function member(entry, offset) {
    const name = Buffer.from(entry.name, entry.flags & UTF8 ? 'utf8' : 'latin1');
    const data = Buffer.from(entry.data ?? '');
    const packed = entry.deflate ? zlib.deflateRawSync(data) : data;
    const stored = entry.password ? encrypt(packed, entry.password, crc32(data) >>> 24) : packed;
    const common = at => [
        [at, 2, 20], [at + 2, 2, entry.flags ?? 0], [at + 4, 2, entry.deflate ? 8 : 0],
        [at + 8, 2, 0x5a21], [at + 10, 4, entry.crc ?? crc32(data)], [at + 14, 4, stored.length],
        [at + 18, 4, data.length], [at + 22, 2, name.length]];
    return {
        local: Buffer.concat([header(0x04034b50, 30, common(4)), name, stored]),
        central: Buffer.concat([header(0x02014b50, 46, [[4, 2, 0x0314], ...common(6),
            [38, 4, ((entry.mode ?? FILE | 0o644) << 16) >>> 0], [42, 4, offset]]), name]),
    };
}

function zip(entries, comment = '') {
    const locals = [], centrals = [];
    let offset = 0, directory = 0;
    for (const entry of entries) {
        const { local, central } = member(entry, offset);
        locals.push(local);
        centrals.push(central);
        offset += local.length;
        directory += central.length;
    }
    const count = Math.min(entries.length, 0xffff);
    const end = header(0x06054b50, 22,
        [[8, 2, count], [10, 2, count], [12, 4, directory], [16, 4, offset], [20, 2, comment.length]]);
    if (entries.length <= 0xffff) return Buffer.concat([...locals, ...centrals, end, Buffer.from(comment)]);
    const at = offset + directory;
    const end64 = header(0x06064b50, 56, [[4, 6, 44], [12, 2, 45], [14, 2, 45],
        [24, 6, entries.length], [32, 6, entries.length], [40, 6, directory], [48, 6, offset]]);
    const locator = header(0x07064b50, 20, [[8, 6, at], [16, 4, 1]]);
    end.writeUInt32LE(0xffffffff, 16);
    return Buffer.concat([...locals, ...centrals, end64, locator, end]);
}

const file = (name, data, mode = 0o644) => ({ name, data, mode: FILE | mode });
const directory = (name, mode = 0o755) => ({ name, mode: DIRECTORY | mode });
const link = (name, target) => ({ name, data: target, mode: LINK | 0o777 });
const two = zip([file('a', 'x'.repeat(5000)), file('b', 'y'.repeat(5000))]);

const archives = {
    plain: zip([directory('bin/'), file('bin/node', 'program', 0o755), file('text', 'words', 0o640),
        link('link', 'bin/node'), { name: 'packed', data: 'z'.repeat(100000), deflate: true },
        { name: 'ü☃', data: 'x', flags: UTF8 }, file('\xfc', 'x')], 'a comment'),
    neighbours: zip([link('one/node', '../other/node'), file('other/node', 'x'), link('other/link', 'node')]),
    nothing: zip([]),
    'dot-dot': zip([file('../outside/new', 'x')]),
    'deep-dot-dot': zip([file('a/b/../../../outside/existing', 'x')]),
    'backslash-dot-dot': zip([file('..\\outside\\existing', 'x')]),
    absolute: zip([file(outside + '/existing', 'changed')]),
    'through-link': zip([link('l', outside), file('l/existing', 'changed'), file('l/new', 'x')]),
    'through-relative-link': zip([link('l', '../outside'), file('l/existing', 'changed')]),
    'through-two-links': zip([link('a', '..'), link('b', 'a/outside'), file('b/existing', 'changed')]),
    'over-link': zip([link('l', outside + '/existing'), file('l', 'changed')]),
    'folder-over-link': zip([link('l', outside), directory('l/', 0o777), file('l/existing', 'changed')]),
    'link-over-folder': zip([directory('d/', 0o700), link('d', outside)]),
    'link-over-filled-folder': zip([directory('d/', 0o700), file('d/f', 'x'), link('d', outside)]),
    'set-uid': zip([file('program', 'x', 0o6755), directory('d/', 0o3777), file('d/f', 'x', 0o4755)]),
    'character-device': zip([{ name: 'null', mode: 0o020666 }]),
    'block-device': zip([{ name: 'disk', mode: 0o060666 }]),
    encrypted: zip([{ name: 'secret', data: 'q'.repeat(40), flags: ENCRYPTED }]),
    'locked-with-none': zip([file('a', 'x'),
        { name: 'secret', data: 'q'.repeat(40), flags: ENCRYPTED, password: 'none' }]),
    'locked-with-none-and-packed': zip([
        { name: 'secret', data: 'q'.repeat(4000), deflate: true, flags: ENCRYPTED, password: 'none' }]),
    'wrong-sum': zip([{ name: 'f', data: 'words', crc: 1 }]),
    'cut-in-member': two.subarray(0, 6000),
    'cut-in-directory': two.subarray(0, two.length - 40),
    'cut-in-end': two.subarray(0, two.length - 3),
    'no-bytes': '',
    page: '<html>404 Not Found</html>',
    many: zip(Array.from({ length: 100000 }, (_, i) => file(`${i % 100}/${i}`, String(i)))),
};
for (const [name, bytes] of Object.entries(archives)) {
    fs.writeFileSync(path.join(out, name + '.zip'), bytes);
}
