/* Eight threads verify at the same time: verify_threads PROJECT SIGNATURE FILE, a valid one
 *
 * Exit status 0 if every verdict is right. */

#include <pthread.h>
#include <sign_verify.h>
#include <stddef.h>

enum { threads = 8, calls = 50 };

static char **words;

static void *verify(void *wrong) {
    for (int i = 0; i < calls; ++i) {
        *(int *)wrong += sign_verify_file(words[1], words[3], words[2], NULL) != 1;
        *(int *)wrong += sign_verify_data(words[1], "x", 1, words[2], NULL) != 0;
    }
    return NULL;
}

int main(int argc, char **argv) {
    pthread_t started[threads];
    int wrong[threads] = {0}, sum = argc != 4;
    words = argv;
    for (int i = 0; i < threads; ++i) {
        sum += pthread_create(&started[i], NULL, verify, &wrong[i]) != 0;
    }
    for (int i = 0; i < threads; ++i) {
        sum += pthread_join(started[i], NULL) != 0;
        sum += wrong[i];
    }
    return sum != 0;
}
