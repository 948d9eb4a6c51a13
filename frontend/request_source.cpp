#include "frontend/request_source.h"

#include <cstdlib>

RequestSource requestOfProcess() {
    return {.contentType = std::getenv("CONTENT_TYPE"),
            .contentLength = std::getenv("CONTENT_LENGTH"),
            .body = stdin};
}
