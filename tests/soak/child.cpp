// The program that the server is made to start: it lives for some milliseconds, and for at most a
// few seconds when it is stopped and never continued.
#include <unistd.h>

#include <chrono>
#include <thread>

int main() {
    ::alarm(5);
    std::this_thread::sleep_for(std::chrono::milliseconds(::getpid() % 30));
    return ::getpid() % 3;
}
