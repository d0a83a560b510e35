#pragma once

#include "velmora/constraints/MBS_ExtConstraint.h"
#include "velmora/constraints/MBS_OneByOneGroup.h"
#include "velmora/model/MBS_ModelDofVector.h"
#include "velmora/platform/LargePages.h"

#include <memory>
#include <utility>

namespace velmora {

/// The constraints of one such class; their states stand side by side.
template <class State>
class MBS_StateGroup final : public MBS_OneByOneGroup {
  public:
    explicit MBS_StateGroup(const std::vector<MBS_ExtConstraint*>& members) : MBS_OneByOneGroup(members) {
        states.reserve(members.size());
    }
    void updateForMotion(double, const P* q, const P*, const P*, C* out) override {
        for (State& state : states)
            state.updateForMotion(q, out);
    }
    void updateForJacobian(double, const P* q, const P* qd, const P*, const C* multipliers) override {
        for (State& state : states)
            state.updateForJacobian(q, qd, multipliers);
    }
    void getConstraintForces(const C* multipliers, P* out) const override {
        for (const State& state : states)
            state.addForces(multipliers, out);
    }

    EvaluationArray<State> states;
};

/// Constraint of one equation whose numbers, the elements of its blocks among them, lie in one plain struct.
/// The struct offers `residual`, `updateForMotion`, `updateForJacobian` and `addForces`, which touch nothing
/// else of the constraint; blocks compute by its other operations, one each.
template <class Root, class S>
class MBS_ConstraintWithState : public Root {
  public:
    using Root::Root;
    using State = S;
    using P = typename Root::P;
    using C = typename Root::C;

    void getConstraintForces(const C* multipliers, P* out) const final { state->addForces(multipliers, out); }
    void getAndUpdateConstraints(double, const P* q, const P*, const P*, C* out) final {
        *out->equationsOfConstraint(this->constraintIndex) = state->residual(q);
    }
    void updateForMotion(double, const P* q, const P*, const P*, C* out) final {
        state->updateForMotion(q, out);
    }
    void updateForJacobian(double, const P* q, const P* qd, const P*, const C* multipliers) final {
        state->updateForJacobian(q, qd, multipliers);
    }

    std::shared_ptr<MBS_ConstraintGroup> makeGroup(const std::vector<MBS_ExtConstraint*>& members) final {
        auto group = std::make_shared<MBS_StateGroup<State>>(members);
        for (MBS_ExtConstraint* member : members) {
            auto& constraint = dynamic_cast<MBS_ConstraintWithState&>(*member);
            group->states.push_back(*constraint.state);
            constraint.state = std::shared_ptr<State>(group, &group->states.back());
            constraint.aimBlocks();
        }
        return group;
    }

    std::shared_ptr<State> state = std::make_shared<State>();

  protected:
    /// Makes the blocks' elements those of `state`.
    virtual void aimBlocks() = 0;

    template <class Elements>
    void aim(const std::unique_ptr<MBM_DenseMatrix>& matrix, Elements& elements) const {
        auto& standAlone = dynamic_cast<MBM_DenseStandAloneMatrix&>(*matrix);
        standAlone.moveStorage(std::shared_ptr<double[]>(state, elements.data.data()));
    }
};

/// Derivative block of such a constraint. Its `update` is an operation of the constraint's state.
template <class Root, class Constraint>
class MBS_BlockWithState : public Root {
  public:
    template <class... Arguments>
    explicit MBS_BlockWithState(const Constraint& owner, Arguments&&... arguments)
        : Root(owner, std::forward<Arguments>(arguments)...),
          constraint(&owner) {}

  protected:
    auto& state() const { return *constraint->state; }
    /// Multiplier of the constraint's equation.
    double lambda(const MBS_ModelConstraintDofVector* multipliers) const {
        return *multipliers->equationsOfConstraint(constraint->constraintIndex);
    }

  private:
    const Constraint* constraint; // not owned
};

} // namespace velmora
