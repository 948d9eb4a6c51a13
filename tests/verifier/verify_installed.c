/* Asks the installed library by each of its functions: verify_installed PROJECT SIGNATURE FILE
 *
 * Prints the verdict and the rule of each in a line. What cannot be read stands for no bytes. */

#include <sign_verify.h>
#include <stdio.h>
#include <stdlib.h>

static unsigned char *content_of(const char *path, size_t *size) {
    const size_t room = 1 << 20;
    unsigned char *bytes = malloc(room);
    FILE *file = fopen(path, "rb");
    *size = file == NULL || bytes == NULL ? 0 : fread(bytes, 1, room, file);
    if (file != NULL) {
        fclose(file);
    }
    return bytes;
}

int main(int argc, char **argv) {
    const char *rule = "none";
    size_t project_size, size;
    if (argc != 4) {
        return 2;
    }
    unsigned char *project = content_of(argv[1], &project_size);
    unsigned char *data = content_of(argv[3], &size);
    const char *signature = argv[2];
    int valid = sign_verify_file(argv[1], argv[3], signature, &rule);
    printf("%d %s\n", valid, rule);
    valid = sign_verify_data(argv[1], data, size, signature, &rule);
    printf("%d %s\n", valid, rule);
    valid = sign_verify_file_by_bytes(project, project_size, argv[3], signature, &rule);
    printf("%d %s\n", valid, rule);
    valid = sign_verify_data_by_bytes(project, project_size, data, size, signature, &rule);
    printf("%d %s\n", valid, rule);
    valid = sign_verify_data(argv[1], data, size, signature, NULL);
    printf("%d\n", valid);
    free(project);
    free(data);
    return 0;
}
