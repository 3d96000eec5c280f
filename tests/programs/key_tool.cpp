// What the Settings screen does with the keyring, from a test: the token comes by standard input.
//   key_tool keep|forget|read|origin
//   key_tool enter|try|remove         by the field of the Settings screen; tells what it shows

#include <QCoreApplication>
#include <iostream>
#include <string>

#include "app/key_field.h"
#include "sources/async.h"
#include "sources/key_store.h"

namespace {

using namespace marlet;

std::string typed() {
    std::string token;
    std::getline(std::cin, token);
    return token;
}

int show(const KeyField& field) {
    std::cout << field.result() << "\n" << field.origin() << "\n";
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    KeyField field;
    const std::string verb = argc > 1 ? argv[1] : "";
    if (verb == "keep") {
        std::cout << (KeyStore::keep(typed()) ? "kept" : "not kept") << "\n";
    } else if (verb == "forget") {
        std::cout << (KeyStore::forget() ? "gone" : "not gone") << "\n";
    } else if (verb == "read") {
        std::cout << KeyStore::builtIn().value_or("(none)") << "\n";
    } else if (verb == "origin") {
        std::cout << static_cast<int>(KeyStore::origin()) << "\n";
    } else if (verb == "enter") {
        Async::wait(field.keep(typed()));
        return show(field);
    } else if (verb == "try") {
        Async::wait(field.tryKey());
        return show(field);
    } else if (verb == "remove") {
        field.remove();
        return show(field);
    } else {
        return 64;
    }
    return 0;
}
