#pragma once

#include <QCoreApplication>
#include <memory>

#include "app/headless.h"

namespace marlet {

class AppModel;
class QuitGate;

/// The windows as the rest of the program knows them: nothing but whether they are open. Built with
/// screens there is one, without there is none.
class Front {
public:
    virtual ~Front() = default;
    /// Opens the main window. The model is usable at once; nothing has been recovered yet.
    virtual void open() = 0;
    /// Takes the pictures that the options ask for.
    virtual Headless::Shots* shots() = 0;

    /// Whether this start is to have windows: nobody asked for a run that ends by itself, or
    /// pictures were asked for.
    static bool isWanted(const Headless::Options& options);
    /// The application object, with a connection to the desktop only where windows are wanted.
    static std::unique_ptr<QCoreApplication> makeApplication(int& argc, char** argv,
                                                             const Headless::Options& options);
    /// Nothing in a build without screens, or where no window is wanted.
    static std::unique_ptr<Front> make(AppModel& model, QuitGate& gate,
                                       const Headless::Options& options);
};

}  // namespace marlet
