#!/usr/bin/env node
// Signs and verifies through sign.cgi with fetch, as a program or as a module of two functions:
//
//   client.mjs [--form] sign PROJECT data|base64|file VALUE
//   client.mjs [--form] verify PROJECT data|base64|file VALUE SIGNATURE
//
// VALUE of data and base64 is text, @FILE for the bytes of a local file, or - for standard input.
// Such bytes are sent as a form, text in JSON unless --form asks for one. A server takes requests
// of 8 MiB, which hold some 3.3 MB of random bytes. PROJECT and a file's path are paths of the
// server, whose program is at SIGN_URL, or http://127.0.0.1/sign.cgi. Prints the signature, true or
// false. Exit status:
// 0 signed or valid, 1 not valid, 2 wrong usage, 3 refused by the program, 4 no answer from it.

import { readFileSync, realpathSync } from "node:fs";
import { fileURLToPath } from "node:url";

const url = process.env.SIGN_URL ?? "http://127.0.0.1/sign.cgi";
const tooLarge = "request too large; put the data into a file on the server and name it as 'file'";
const usage = "usage: client.mjs [--form] sign|verify PROJECT data|base64|file VALUE [SIGNATURE]";

/** An error with the exit status of the program. */
class Failure extends Error {
    constructor(status, message) {
        super(message);
        this.status = status;
    }
}

/**
 * The text of a signature over value; what says whether it is data, base64 or a file. Bytes are
 * sent as a form, because JSON can hold only text.
 */
export function sign(project, what, value, form = false) {
    return ask("signature", project, what, value, "", form);
}

export async function verify(project, what, value, signature, form = false) {
    // The name that genPairs puts in front is not part of the signature: with it, nothing verifies.
    signature = signature.replace(/^signature:/, "");
    return (await ask("valid", project, what, value, signature, form)) === "true";
}

async function ask(result, project, what, value, signature, form) {
    // Base64 data of more than three bytes is signed with a zero byte in front of its last group.
    // What was signed as base64 is verified as base64.
    const [member, writing] = what === "base64" ? ["data", "base64"] : [what, "plain"];
    const [mode, operation] = result === "signature"
        ? ["generateSignature", "sig_create"] : ["verifySignature", "sig_verify"];
    const bytes = typeof value === "string" ? null : value;
    form ||= bytes !== null;
    // A "+" in form text is a space: URLSearchParams escapes it, and "=", "&" and "%". FormData
    // would go out as multipart/form-data, which the program does not read.
    const body = form
        ? new URLSearchParams({
              [operation]: "true", genpairs: "true", project,
              ...bytes === null && { [`sig_${member}`]: value },
              sig_data_encoding: writing, sig: signature,
          }) + (bytes === null ? "" : `&sig_${member}=${escaped(bytes)}`)
        : JSON.stringify({
              mode, project, signature: { [member]: value, encoding: writing, signature },
          });
    // Without a type, fetch sends text as text/plain. JSON with a charset would be read as a form:
    // these bytes alone.
    const headers = {
        "Content-Type": form ? "application/x-www-form-urlencoded" : "application/json",
    };

    let response, text;
    try {
        // A request that is sent on may come without its body: a redirection is an error.
        const signal = AbortSignal.timeout(60000);
        response = await fetch(url, { method: "POST", headers, body, redirect: "manual", signal });
        text = await response.text();
    } catch (error) {
        const reason = error.cause?.message || error.cause?.code || error.message;
        throw new Failure(4, `no answer from ${url}: ${reason}`);
    }
    const type = response.headers.get("Content-Type") ?? "";
    if (response.status === 400 && type.startsWith("text/plain")) {
        throw new Failure(3, `refused: ${text}`);
    }
    if (response.status === 200) {
        try {
            // A form is answered in a pair, name:value.
            const answer = form ? Object.fromEntries([text.split(":", 2)]) : JSON.parse(text);
            const value = String(answer[result] ?? "");
            if (result === "signature" ? value !== "" : ["true", "false"].includes(value)) {
                return value;
            }
        } catch {
            // Told below.
        }
    }
    const told = response.status === 413 ? `413, ${tooLarge}` : `${response.status} ${type}`;
    throw new Failure(4, `no answer from the program: HTTP status ${told}`);
}

/** Bytes as form text: whatever is not a letter or a digit is escaped. */
function escaped(bytes) {
    const table = Array.from({ length: 256 }, (_, byte) => {
        const character = String.fromCharCode(byte);
        return /[0-9A-Za-z]/.test(character)
            ? character : `%${byte.toString(16).padStart(2, "0")}`;
    });
    return Array.from(bytes, (byte) => table[byte]).join("");
}

/** The bytes that @FILE or - stands for, or the text itself. */
function localBytes(value) {
    if (value !== "-" && !value.startsWith("@")) {
        return value;
    }
    try {
        return readFileSync(value === "-" ? 0 : value.slice(1));
    } catch (error) {
        throw new Failure(2, `${value.slice(1) || "standard input"}: ${error.message}`);
    }
}

async function main(words) {
    // What is not UTF-8 in an argument has come here as U+FFFD: other bytes would be signed.
    if (words.some((word) => word.includes("\uFFFD"))) {
        throw new Failure(2, "an argument is not UTF-8 or holds U+FFFD; give it as @FILE or -");
    }
    const form = words[0] === "--form";
    const [operation, project, what, ...rest] = form ? words.slice(1) : words;
    const known = { sign: [sign, 1], verify: [verify, 2] };
    if (!Object.hasOwn(known, operation ?? "") || rest.length !== known[operation][1]
        || !["data", "base64", "file"].includes(what)) {
        throw new Failure(2, usage);
    }
    if (what !== "file") {
        rest[0] = localBytes(rest[0]);
    }
    const answer = await known[operation][0](project, what, ...rest, form);
    console.log(String(answer));
    process.exitCode = answer === false ? 1 : 0;
}

if (process.argv[1] && realpathSync(process.argv[1]) === fileURLToPath(import.meta.url)) {
    main(process.argv.slice(2)).catch((error) => {
        console.error(`client.mjs: ${error.message}`);
        process.exitCode = error.status ?? 4;
    });
}
