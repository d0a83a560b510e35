#include "velmora/model/internal/MBS_AnnouncedTypes.h"

namespace velmora {

namespace {

constexpr MBS_BlockTypeInfo announcedTypes[] = {
    {"Actor", "KinematicActor", MBS_TypeStatus::NotInThisBuild, {}},
};

} // namespace

std::span<const MBS_BlockTypeInfo> MBS_announcedTypes() {
    return announcedTypes;
}

} // namespace velmora
