#pragma once

namespace marlet::test {

/// Before the application object: no display, no person's folders, key or language, no service but
/// the catalogue.
void standOnOwnGround();

/// From now on a warning on the console that isn't expected ends in a failure: QML says there what
/// is wrong with it. Gives how many there were.
int warningsSoFar();
void watchTheConsole();

}  // namespace marlet::test
