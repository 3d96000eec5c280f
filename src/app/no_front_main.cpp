// In place of the screens in a build without them.

#include "app/front.h"

namespace marlet {

bool Front::isWanted(const Headless::Options&) {
    return false;
}

std::unique_ptr<QCoreApplication> Front::makeApplication(int& argc, char** argv,
                                                         const Headless::Options&) {
    return std::make_unique<QCoreApplication>(argc, argv);
}

std::unique_ptr<Front> Front::make(AppModel&, QuitGate&, const Headless::Options&) {
    return nullptr;
}

}  // namespace marlet
