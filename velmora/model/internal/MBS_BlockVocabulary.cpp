#include "velmora/model/MBS_BlockVocabulary.h"

#include "velmora/bodies/MBS_Body.h"
#include "velmora/bodies/MBS_BodyTypes.h"
#include "velmora/constraints/MBS_ConstraintTypes.h"
#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/data_objects/MBS_DataObject.h"
#include "velmora/data_objects/MBS_DataObjectTypes.h"
#include "velmora/external_forces/MBS_ExternalForceTypes.h"
#include "velmora/forces/MBS_Force.h"
#include "velmora/forces/MBS_ForceTypes.h"
#include "velmora/measures/MBS_Actor.h"
#include "velmora/measures/MBS_Measure.h"
#include "velmora/measures/MBS_MeasureTypes.h"

namespace velmora {

std::vector<MBS_BlockTypeInfo> MBS_getBlockVocabulary() {
    std::vector<MBS_BlockTypeInfo> vocabulary;
    for (const auto& row : MBS_bodyTypes())
        vocabulary.push_back({"Body", row.type, row.status, row.keys});
    for (const auto& row : MBS_constraintTypes())
        vocabulary.push_back({"Constraint", row.type, row.status, row.keys});
    for (const auto& rows : {MBS_forceTypes(), MBS_externalForceTypes()})
        for (const auto& row : rows)
            vocabulary.push_back({"Force", row.type, row.status, row.keys});
    for (const auto& row : MBS_dataObjectTypes())
        vocabulary.push_back({"DataObject", row.type, row.status, row.keys});
    for (const auto& row : MBS_measureTypes())
        vocabulary.push_back({"Measure", row.type, row.status, row.keys});
    vocabulary.push_back({"Actor", "KinematicActor", MBS_TypeStatus::Available, MBS_actorKeys()});
    return vocabulary;
}

} // namespace velmora
