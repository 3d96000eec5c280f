#pragma once

#include <memory>
#include <string>

namespace marlet {

/// Whether a newer version can be looked for, and how. The program never looks by itself.
class Updater {
public:
    virtual ~Updater() = default;
    virtual bool canCheck() const = 0;
    /// Looks for a newer version because the person asked; nothing unless canCheck().
    virtual void check() = 0;
    /// What Settings say beside "Updates".
    virtual std::string words() const = 0;

    /// This system's: a package is kept up to date by whatever installed it, so nothing is there
    /// to be checked and no connection is ever made.
    static Updater& shared();
    /// At the launch; an automated run starts none.
    static void start();
    static bool isStarted();
    /// In place of the system's, for a platform that has another, and for tests. Not started.
    static void install(std::unique_ptr<Updater> updater);

protected:
    /// The platform's framework comes up here.
    virtual void begin() {}
};

}  // namespace marlet
