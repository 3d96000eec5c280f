#pragma once

#include <functional>
#include <string>
#include <vector>

#include "screens/stage/stage.h"

namespace marlet::test {

/// A state of the window worth looking at. A file scenes_<screen>.cpp holds those of a screen, each
/// registered by a static Scene; the stage is as at a first start.
struct Scene {
    enum class Looks { both, light };
    Scene(std::string sceneName, std::function<void(Stage&)> sceneSet,
          Looks sceneLooks = Looks::both);
    static std::vector<Scene>& all();

    std::string name;  ///< "review-doubtful"
    std::function<void(Stage&)> set;
    Looks looks;
};

}  // namespace marlet::test
