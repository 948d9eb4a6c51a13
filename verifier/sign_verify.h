#pragma once

/* Verifying signatures in a program of one's own.
 *
 * Each function returns 1 if `signature`, terminated text, is valid, and 0 if it is not. It never
 * returns anything else, and it never ends the process, with one exception below. Valid means what
 * sign.cgi and `projectctl verify` mean by it, of data that are taken here.
 *
 * `rule` may be null. Otherwise *rule becomes the code of the rule that decided, as in
 * "signature.valid", "signature.mismatch", "file.open" or "project.digest": the first one in the
 * order of data or file, project, key, signature. The codes are those of `projectctl verify
 * --json`, stay the same when words change, and are constants that nobody frees. Where projectctl
 * looks further there is one code here: "signature.mismatch" for a key that is unsound, and
 * "project.unreadable" for a folder. A project that is a FIFO or a device is judged by the bytes
 * that it gives, without waiting for any: "project.header" if there are none. "project.memory"
 * stands for any lack of memory.
 *
 * A project is a path, or `project_size` bytes with the content of a project file. It needs no
 * private key: `projectctl strip` makes such a copy. The key is trusted: run `projectctl check` on
 * it before it is handed out.
 *
 * Data are 1 to 2^31 - 1 bytes. More are not read: the rule is "file.too-large", whereas sign.cgi
 * counts the size of data modulo 2^32. A file is mapped, and its size counts modulo 2^32, as it
 * does for signing. The exception: if somebody shortens the file while it is read, the process ends
 * with SIGBUS. Read a file that others can write and hand in its bytes.
 *
 * Threads may call at the same time. The arithmetic has one state for the process, which a mutex
 * guards, so that calls run one after the other. Nothing is kept between calls. After a fork while
 * another thread is in a call, the child must not call before it executes another program. */

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

int sign_verify_data(const char* project, const void* data, size_t size, const char* signature,
                     const char** rule);

int sign_verify_file(const char* project, const char* file, const char* signature,
                     const char** rule);

int sign_verify_data_by_bytes(const void* project, size_t project_size, const void* data,
                              size_t size, const char* signature, const char** rule);

int sign_verify_file_by_bytes(const void* project, size_t project_size, const char* file,
                              const char* signature, const char** rule);

#ifdef __cplusplus
}
#endif
