#pragma once

#include <QQuickAsyncImageProvider>
#include <memory>

namespace marlet {

class ArtStore;

/// "image://art/..." for QML; the addresses are ArtAddress's. Where there is no picture it gives
/// one clear pixel, so that what lies behind shows and the console stays silent: an Image whose
/// implicitWidth is 1 has nothing to show. Made and destroyed on the main context, by its engine.
class ArtProvider : public QQuickAsyncImageProvider {
public:
    static constexpr const char* name = "art";

    ArtProvider();
    ~ArtProvider() override;
    QQuickImageResponse* requestImageResponse(const QString& id, const QSize& wanted) override;

private:
    std::shared_ptr<ArtStore> store_;
};

}  // namespace marlet
