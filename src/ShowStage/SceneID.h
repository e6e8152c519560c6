#pragma once
// Identifiers of layers, pictures and video surfaces in a scene: the same
// UUIDs as the show document's, so the engine carries a cue's id straight
// into its scene.

#include "Identity/Uuid.h"

namespace velarion {

using SceneID = Uuid;

} // namespace velarion
