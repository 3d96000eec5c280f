#include "screens/pictures/scenes.h"

namespace marlet::test {
namespace {

const Scene notice("frame-notice", [](Stage& stage) {
    stage.setNotice(
        QStringLiteral("2 files still need a look and weren't added. 3 added to the queue."));
    stage.say(QStringLiteral("3 added to Queue"));
});

const Scene clearing("frame-clear-history", [](Stage& stage) {
    stage.addHistory({QVariantMap{{QStringLiteral("title"), QStringLiteral("Sintel")}}});
    stage.screens().askToClearHistory();
});

}  // namespace
}  // namespace marlet::test
