// A CGI program that does nothing but read a short body and answer as sign.cgi answers a request
// for a signature: what a server needs for starting any program at all.
#include <unistd.h>

#include <array>
#include <string_view>

int main() {
    std::array<char, 4096> body;
    while (read(STDIN_FILENO, body.data(), body.size()) > 0) {
    }
    constexpr std::string_view answer =
        "Status: 200 OK\r\nContent-Type: application/json\r\nContent-Length: 72\r\n\r\n"
        "{\"signature\":\"DQgNCsGVeND97uGqZSO2gcsun3pArn6DR/8WVuFfquI5yf/C4Tgi5KuA\"}";
    return write(STDOUT_FILENO, answer.data(), answer.size()) < 0 ? 1 : 0;
}
