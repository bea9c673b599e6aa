// Two nested scopes that log how long they take.

#include <lapwing/instrumentation.h>

#include <iostream>
#include <string>
#include <thread>

namespace {

void takeTime(int milliseconds) {
    std::this_thread::sleep_for(Milliseconds(milliseconds));
}

void parseFile() {
    Instrumentation parse("Parse");
    takeTime(3);
    parse.lap("tokens");
    takeTime(1);
}

}  // namespace

int main() {
    Instrumentation::setGlobalLogMessageHandler(
        [](const std::string& line) { std::cout << line << '\n'; });

    Instrumentation load("Load");
    parseFile();
    load.note("tree is ready");
    load.notes({"12 nodes", "3 levels"}, "Tree");
}
