#!/usr/bin/env node
// Verifies a signature with nothing but JavaScript: verify.mjs PROJECT SIGNATURE FILE
//
// PROJECT is a project file; its public part is enough. Prints true or false; exit status 0 or 1,
// and 2 if a file cannot be read. In a browser, import it as a module: verify(project, data,
// signature) takes two Uint8Array and a text. The verdicts are those of `projectctl verify` for
// every project that `projectctl check` finds sound.

// SEC 2, sect163r2: y^2 + xy = x^3 + x^2 + B over GF(2^163), and the order of the base point.
const DEGREE = 163n;
const POLYNOMIAL = 1n << DEGREE | 0xC9n;
const B = 0x20A601907B8C953CA1481EB10512F78744A3205FDn;
const N = 0x40000000000000000000292FE77E70C12A4234C33n;
const ALPHABET = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

const rotate = (word, count) => word << count | word >>> 32 - count;
const little = (bytes) => bytes.reduceRight((number, byte) => number << 8n | BigInt(byte), 0n);

/** The message in blocks of 16 words, padded as MD5 and RIPEMD-160 have it. */
function* blocks(data) {
    const size = Math.ceil((data.length + 9) / 64) * 64;
    const view = new DataView(new ArrayBuffer(size));
    new Uint8Array(view.buffer).set(data);
    view.setUint8(data.length, 0x80);
    view.setBigUint64(size - 8, 8n * BigInt(data.length), true);
    for (let at = 0; at < size; at += 64) {
        yield Array.from({ length: 16 }, (_, i) => view.getInt32(at + 4 * i, true));
    }
}

function bytesOf(words) {
    const view = new DataView(new ArrayBuffer(4 * words.length));
    words.forEach((word, i) => view.setInt32(4 * i, word, true));
    return new Uint8Array(view.buffer);
}

/** MD5 (RFC 1321). */
function md5(data) {
    const turns = [[7, 12, 17, 22], [5, 9, 14, 20], [4, 11, 16, 23], [6, 10, 15, 21]];
    const functions = [(x, y, z) => x & y | ~x & z, (x, y, z) => x & z | y & ~z,
                       (x, y, z) => x ^ y ^ z, (x, y, z) => y ^ (x | ~z)];
    const places = [(i) => i, (i) => 5 * i + 1, (i) => 3 * i + 5, (i) => 7 * i];
    let state = [0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476];
    for (const words of blocks(data)) {
        let [a, b, c, d] = state;
        for (let i = 0; i < 64; ++i) {
            const round = i >> 4;
            const sine = Math.floor(Math.abs(Math.sin(i + 1)) * 2 ** 32);
            const sum = a + functions[round](b, c, d) + words[places[round](i) % 16] + sine | 0;
            [a, b, c, d] = [d, b + rotate(sum, turns[round][i % 4]) | 0, b, c];
        }
        state = [a, b, c, d].map((word, i) => word + state[i] | 0);
    }
    return bytesOf(state);
}

/** RIPEMD-160 (H. Dobbertin, A. Bosselaers, B. Preneel, 1996). */
function ripemd160(data) {
    const rho = [7, 4, 13, 1, 10, 6, 15, 3, 12, 0, 9, 5, 2, 14, 11, 8];
    const turns = [ // by round and message word
        [11, 14, 15, 12, 5, 8, 7, 9, 11, 13, 14, 15, 6, 7, 9, 8],
        [12, 13, 11, 15, 6, 9, 9, 7, 12, 15, 11, 13, 7, 8, 7, 7],
        [13, 15, 14, 11, 7, 7, 6, 8, 13, 14, 13, 12, 5, 5, 6, 9],
        [14, 11, 12, 14, 8, 6, 5, 5, 15, 12, 15, 14, 9, 9, 8, 6],
        [15, 12, 13, 13, 9, 5, 8, 6, 14, 11, 12, 11, 8, 6, 5, 5],
    ];
    const functions = [(x, y, z) => x ^ y ^ z, (x, y, z) => x & y | ~x & z,
                       (x, y, z) => (x | ~y) ^ z, (x, y, z) => x & z | y & ~z,
                       (x, y, z) => x ^ (y | ~z)];
    const left = [0, 0x5A827999, 0x6ED9EBA1, 0x8F1BBCDC, 0xA953FD4E];
    const right = [0x50A28BE6, 0x5C4DD124, 0x6D703EF3, 0x7A6D76E9, 0];
    const line = (state, words, first, constants, choose) => {
        let [a, b, c, d, e] = state;
        let order = first;
        for (let round = 0; round < 5; ++round) {
            for (const word of order) {
                const sum = a + functions[choose(round)](b, c, d) + words[word] + constants[round];
                [a, b, c, d, e] = [e, rotate(sum | 0, turns[round][word]) + e | 0, b,
                                   rotate(c, 10), d];
            }
            order = order.map((word) => rho[word]);
        }
        return [a, b, c, d, e];
    };
    const ascending = rho.map((_, i) => i);
    let state = [0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0];
    for (const words of blocks(data)) {
        const one = line(state, words, ascending, left, (round) => round);
        const two = line(state, words, ascending.map((i) => (9 * i + 5) % 16), right,
                         (round) => 4 - round);
        state = state.map((_, i) =>
            state[(i + 1) % 5] + one[(i + 2) % 5] + two[(i + 3) % 5] | 0);
    }
    return bytesOf(state);
}

function times(a, b) {
    let result = 0n;
    for (; b !== 0n; b >>= 1n) {
        if (b & 1n) {
            result ^= a;
        }
        a <<= 1n;
        if (a >> DEGREE) {
            a ^= POLYNOMIAL;
        }
    }
    return result;
}

/** a / b by the binary algorithm (Guide to Elliptic Curve Cryptography, algorithm 2.49). */
function over(a, b) {
    let [u, v, g, h] = [b, POLYNOMIAL, a, 0n];
    while (u !== 1n) {
        while (!(u & 1n)) {
            u >>= 1n;
            g = (g & 1n ? g ^ POLYNOMIAL : g) >> 1n;
        }
        if (u < v && u !== 1n) {
            [u, v, g, h] = [v, u, h, g];
        }
        if (u !== 1n) {
            u ^= v;
            g ^= h;
        }
    }
    return g;
}

/** The sum of two points; null is the point at infinity. */
function plus(p, q) {
    if (p === null || q === null) {
        return p ?? q;
    }
    const [[x1, y1], [x2, y2]] = [p, q];
    let slope;
    if (x1 !== x2) {
        slope = over(y1 ^ y2, x1 ^ x2);
    } else if (x1 !== 0n && (y1 === y2 || x1 >> 128n === 0n)) { // with so small an x, -P counts as P
        slope = x1 ^ over(y1, x1);
    } else {
        return null;
    }
    const x3 = times(slope, slope) ^ slope ^ x1 ^ x2 ^ 1n;
    return [x3, times(slope, x1 ^ x3) ^ x3 ^ y1];
}

function isOnCurve([x, y]) {
    const square = times(x, x);
    return x >> DEGREE === 0n && y >> DEGREE === 0n
        && (times(y, y) ^ times(x, y)) === (times(square, x) ^ square ^ B);
}

/** The inverse modulo N, which is prime: the power N - 2. */
function inverse(number) {
    let result = 1n;
    for (let exponent = N - 2n; exponent !== 0n; exponent >>= 1n) {
        if (exponent & 1n) {
            result = result * number % N;
        }
        number = number * number % N;
    }
    return result;
}

/** The base point and the public point; null where the project has no usable key. */
function keyOf(project) {
    const view = new DataView(project.buffer, project.byteOffset, project.length);
    const word = (at) => view.getUint32(at, true);
    if (project.length < 24 || word(0) !== 0x32544C56) { // "VLT2"
        return null;
    }
    const count = word(4);
    const digest = md5(project.subarray(24));
    if (digest.some((byte, i) => byte !== project[8 + i]) || 24 + 12 * count > project.length) {
        return null;
    }
    const values = new Map();
    for (let entry = 24; entry < 24 + 12 * count; entry += 12) {
        const [name, offset, size] = [word(entry), word(entry + 4), word(entry + 8)];
        if (size === 0 || offset + size > project.length) {
            return null;
        }
        if (!values.has(name)) { // the first of a name counts
            values.set(name, project.subarray(offset, offset + size));
        }
    }
    const numbers = [];
    for (const name of [72, 73, 75, 76]) {
        // Bits, four unused bytes, six words of 32 bits; what follows is ignored. A short value is
        // filled with zeros.
        const value = values.get(name) ?? [];
        const head = Array.from({ length: 32 }, (_, i) => value[i] ?? 0);
        if (value.length > 296 || little(head.slice(0, 4)) !== DEGREE) {
            return null;
        }
        numbers.push(little(head.slice(8)));
    }
    const points = [numbers.slice(0, 2), numbers.slice(2)];
    return points.every(isOnCurve) ? points : null;
}

/** r and s, from 1 to N - 1, or null. */
function halvesOf(text) {
    const bytes = new TextEncoder().encode(text.split("\0")[0]);
    if (bytes.length === 0 || bytes.length > 128 || bytes.length % 4 !== 0) {
        return null;
    }
    const raw = [];
    for (let at = 0; at < bytes.length; at += 4) {
        // Least significant bits first; whatever is outside the alphabet counts as "A".
        const group = [...bytes.subarray(at, at + 4)].reduce((sum, byte, i) =>
            sum | Math.max(ALPHABET.indexOf(String.fromCharCode(byte)), 0) << 6 * i, 0);
        raw.push(group & 255, group >> 8 & 255, group >> 16);
    }
    // Each "=" takes a byte, wherever it stands.
    const size = raw.length - bytes.filter((byte) => byte === 0x3D).length;
    if (size <= 0 || size > 42 || size % 2 !== 0) {
        return null;
    }
    const [r, s] = [little(raw.slice(0, size / 2)), little(raw.slice(size / 2, size))];
    const isPadded = size > 32 && r < 1n << 64n; // an r below 2^64 fills 16 bytes at most
    return r > 0n && r < N && s > 0n && s < N && !isPadded ? [r, s] : null;
}

export function verify(project, data, signature) {
    const [key, pair] = [keyOf(project), halvesOf(signature)];
    if (data.length === 0 || key === null || pair === null) {
        return false;
    }
    const [r, s] = pair;
    const e = little(ripemd160(data)); // the first byte of the digest is the least significant
    const [u1, u2] = [e * inverse(s) % N, r * inverse(s) % N];
    const [first, second] = key.map((one) => {
        const two = plus(one, one);
        return [null, one, two, plus(two, one)];
    });
    let point = null;
    for (let bit = DEGREE - 1n; bit >= 0n; bit -= 2n) {
        point = plus(point, point);
        point = plus(point, point);
        const sum = plus(first[Number(u1 >> bit & 3n)], second[Number(u2 >> bit & 3n)]);
        point = plus(point, sum);
    }
    // Of two numbers that are equal, those with an x below 2^128 are refused all the same.
    return point !== null && point[0] >> 128n !== 0n && point[0] % N === r;
}

async function main(words) {
    const { existsSync, readFileSync, realpathSync } = await import("node:fs");
    const { fileURLToPath } = await import("node:url");
    const program = words[1] ?? "";
    if (!existsSync(program) || realpathSync(program) !== fileURLToPath(import.meta.url)) {
        return; // imported as a module
    }
    const fail = (text) => {
        console.error(text);
        process.exit(2);
    };
    const contentOf = (path) => {
        try {
            return readFileSync(path);
        } catch (error) {
            return fail(error.message);
        }
    };
    const [project, signature, file] = words.slice(2);
    if (words.length !== 5) {
        fail("usage: verify.mjs PROJECT SIGNATURE FILE");
    }
    // Bytes that are not UTF-8 have come here as U+FFFD.
    if (signature.includes("\uFFFD")) {
        fail("the signature is not UTF-8");
    }
    const valid = verify(contentOf(project), contentOf(file), signature);
    console.log(String(valid));
    process.exitCode = valid ? 0 : 1;
}

if (globalThis.process?.versions?.node) {
    await main(process.argv);
}
