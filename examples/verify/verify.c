/* Verifies a signature with libcrypto (OpenSSL 3.0, with binary curves): verify PROJECT SIGNATURE FILE
 *
 *   cc -O2 -o verify verify.c -lcrypto
 *
 * PROJECT is a project file; its public part is enough. Prints true or false; exit status 0 or 1, and
 * 2 if a file cannot be read. The verdicts are those of `projectctl verify` for every project that
 * `projectctl check` finds sound, for data of less than 2 GiB. There is one exception, which nobody
 * meets by chance: where the private scalar is a quotient of small numbers modulo n, and a small
 * multiple of the base point has an x below 2^128, some verdicts differ, either way. */

#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/ec.h>
#include <openssl/md5.h>
#include <openssl/ripemd.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

/* SEC 2, sect163r2: the polynomial of the field, a, b and the order. */
static const char *const curve[] = {"800000000000000000000000000000000000000C9", "1",
                                    "20A601907B8C953CA1481EB10512F78744A3205FD",
                                    "40000000000000000000292FE77E70C12A4234C33"};

typedef struct {
    unsigned char *bytes;
    size_t size;
} Content;

static uint32_t little32(const unsigned char *at) {
    return at[0] | (uint32_t)at[1] << 8 | (uint32_t)at[2] << 16 | (uint32_t)at[3] << 24;
}

/* A coordinate of the project: the first entry with this id. Null if there is none of 163 bits. */
static BIGNUM *coordinate(Content project, uint32_t id) {
    const uint32_t count = little32(project.bytes + 4);
    for (uint32_t i = 0; i < count; ++i) {
        const unsigned char *entry = project.bytes + 24 + (size_t)12 * i;
        if (little32(entry) == id) {
            /* Bits, four unused bytes, six words of 32 bits; a short value is filled with zeros. */
            unsigned char value[32] = {0};
            const uint32_t size = little32(entry + 8);
            memcpy(value, project.bytes + little32(entry + 4), size < 32 ? size : 32);
            return size > 296 || little32(value) != 163 ? NULL : BN_lebin2bn(value + 8, 24, NULL);
        }
    }
    return NULL;
}

/* Whether the header and each entry are in order. */
static int is_project(Content project) {
    unsigned char digest[16];
    if (project.size < 24 || memcmp(project.bytes, "VLT2", 4) != 0) {
        return 0;
    }
    MD5(project.bytes + 24, project.size - 24, digest);
    const uint64_t count = little32(project.bytes + 4);
    if (memcmp(digest, project.bytes + 8, 16) != 0 || 24 + 12 * count > project.size) {
        return 0;
    }
    for (uint64_t i = 0; i < count; ++i) {
        const uint64_t offset = little32(project.bytes + 24 + 12 * i + 4);
        const uint64_t size = little32(project.bytes + 24 + 12 * i + 8);
        if (size == 0 || offset + size > project.size) {
            return 0;
        }
    }
    return 1;
}

/* Reads r and s out of the text; no if no signature has such a text. */
static int read_pair(const char *text, const BIGNUM *order, BIGNUM *r, BIGNUM *s) {
    static const char alphabet[] =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const size_t length = strlen(text);
    unsigned char raw[96] = {0};
    int size = 0;
    if (length == 0 || length > 128 || length % 4 != 0) {
        return 0;
    }
    for (size_t i = 0; i < length; i += 4, size += 3) {
        uint32_t group = 0;
        for (size_t j = 0; j < 4; ++j) {
            /* Least significant bits first; whatever is outside the alphabet counts as "A". */
            const char *found = strchr(alphabet, text[i + j]);
            group |= found == NULL ? 0 : (uint32_t)(found - alphabet) << 6 * j;
            size -= text[i + j] == '='; /* takes a byte, wherever it stands */
        }
        for (size_t j = 0; j < 3; ++j) {
            raw[i / 4 * 3 + j] = (unsigned char)(group >> 8 * j);
        }
    }
    if (size <= 0 || size > 42 || size % 2 != 0) {
        return 0;
    }
    const int half = size / 2;
    BN_lebin2bn(raw, half, r);
    BN_lebin2bn(raw + half, half, s);
    /* An r below 2^64 is not to fill more than 16 bytes. */
    const int is_padded = half > 16 && BN_num_bits(r) <= 64;
    return !is_padded && !BN_is_zero(r) && !BN_is_zero(s) && BN_cmp(r, order) < 0 &&
           BN_cmp(s, order) < 0;
}

static int verify(Content project, const char *signature, Content data) {
    if (data.size == 0 || !is_project(project)) {
        return 0;
    }
    BN_CTX *c = BN_CTX_new();
    BIGNUM *p = NULL, *a = NULL, *b = NULL, *n = NULL;
    BN_hex2bn(&p, curve[0]), BN_hex2bn(&a, curve[1]), BN_hex2bn(&b, curve[2]);
    BN_hex2bn(&n, curve[3]);
    BIGNUM *xy[4], *r = BN_new(), *s = BN_new(), *e = NULL, *x = BN_new(), *v = BN_new();
    for (uint32_t i = 0; i < 4; ++i) {
        xy[i] = coordinate(project, (const uint32_t[]){72, 73, 75, 76}[i]);
    }
    EC_GROUP *group = EC_GROUP_new_curve_GF2m(p, a, b, c);
    EC_POINT *base = EC_POINT_new(group), *public = EC_POINT_new(group), *R = EC_POINT_new(group);
    int valid = xy[0] && xy[1] && xy[2] && xy[3] && read_pair(signature, n, r, s) &&
                EC_POINT_set_affine_coordinates(group, base, xy[0], xy[1], c) &&
                EC_POINT_set_affine_coordinates(group, public, xy[2], xy[3], c) &&
                EC_GROUP_set_generator(group, base, n, BN_value_one());
    if (valid && BN_cmp(xy[0], xy[2]) == 0 && BN_cmp(xy[1], xy[3]) != 0) {
        valid = BN_num_bits(xy[0]) > 128;
    }
    if (valid) {
        unsigned char digest[20];
        RIPEMD160(data.bytes, data.size, digest);
        e = BN_lebin2bn(digest, 20, NULL); /* its first byte is the least significant */
        BN_mod_inverse(s, s, n, c);
        BN_mod_mul(e, e, s, n, c);
        BN_mod_mul(s, r, s, n, c);
        /* Of two numbers that are equal, those with an x below 2^128 are refused all the same. */
        valid = EC_POINT_mul(group, R, e, public, s, c) && !EC_POINT_is_at_infinity(group, R) &&
                EC_POINT_get_affine_coordinates(group, R, x, NULL, c) && BN_num_bits(x) > 128 &&
                BN_nnmod(v, x, n, c) && BN_cmp(v, r) == 0;
    }
    BIGNUM *all[] = {p, a, b, n, xy[0], xy[1], xy[2], xy[3], r, s, e, x, v};
    for (size_t i = 0; i < sizeof all / sizeof *all; ++i) {
        BN_free(all[i]);
    }
    EC_POINT_free(base), EC_POINT_free(public), EC_POINT_free(R);
    EC_GROUP_free(group);
    BN_CTX_free(c);
    return valid;
}

static Content content_of(const char *path) {
    Content content = {NULL, 0};
    FILE *file = fopen(path, "rb");
    size_t got = 1;
    while (file != NULL && got != 0) {
        content.bytes = realloc(content.bytes, 2 * content.size + 65536);
        if (content.bytes == NULL) {
            break;
        }
        got = fread(content.bytes + content.size, 1, content.size + 65536, file);
        content.size += got;
    }
    if (file == NULL || content.bytes == NULL || ferror(file)) {
        perror(path);
        exit(2);
    }
    fclose(file);
    return content;
}

int main(int argc, char **argv) {
    if (argc != 4) {
        fputs("usage: verify PROJECT SIGNATURE FILE\n", stderr);
        return 2;
    }
    const int valid = verify(content_of(argv[1]), argv[2], content_of(argv[3]));
    puts(valid ? "true" : "false");
    return valid ? 0 : 1;
}
