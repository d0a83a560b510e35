#pragma once

#include "velmora/bodies/MBS_Body.h"
#include "velmora/forces/ExpressionLoad.h"
#include "velmora/forces/MBS_Force.h"
#include "velmora/matrix/MBM_DenseMatrix.h"
#include "velmora/model/FetchAhead.h"
#include "velmora/model/MBS_History.h"

namespace velmora {

/// Force or torque of an expression, over the root of single-body or body-body forces. Its blocks stand in
/// the order of the load's columns.
template <class Root>
class ExpressionForce : public Root {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    using Root::Root;

    void addExternalForces(double t, const P* q, const P* qd, const P*, P* Q) override {
        load->evaluate(t, q, qd);
        addLoad(load->vector(), q, Q);
    }
    void updateMatricesForJacobian(double t, const P* q, const P* qd, const P* qdd) override {
        for (std::size_t k = 0; k < load->columns.size(); ++k)
            updateColumn(t, q, qd, qdd, nullptr, k);
    }
    /// Overwrites what result data show; the force has to be evaluated again before these, and before the
    /// blocks.
    void addExternalForcesDPar(double t, const P* q, const P* qd, const P*, const std::string& parameter,
                               P* Q) override {
        if (Vec3 derivative; load->parameterDerivative(t, q, qd, parameter, derivative))
            addLoad(derivative, q, Q);
    }
    void fetchAhead(unsigned step, bool isForBlocks) const override {
        if (step > 0)
            return load->fetchAhead(step, isForBlocks);
        fetch(load.get(), sizeof(ExpressionLoad));
        if (isForBlocks)
            fetch(blockValues.get(), rowBodies * load->numOfBlocks * valuesPerBlock * sizeof(double));
    }
    /// Of a direction that is refused now.
    void exchangeHistory(MBS_History& history) override { history.exchange(load->currentDirection.data); }
    /// Refreshes all blocks of the k-th column of the load, at the state of the last evaluation.
    virtual void updateColumn(double t, const P* q, const P* qd, const P* qdd, const C* multipliers,
                              std::size_t k) = 0;

    std::unique_ptr<ExpressionLoad> load; ///< null if a key is faulty

  protected:
    /// Adds the generalised forces of this vector to Q.
    virtual void addLoad(const Vec3& vector, const P* q, P* Q) = 0;
    void setLoad(std::unique_ptr<ExpressionLoad> newLoad) {
        load = std::move(newLoad);
        this->dependencyMeasures = load->measures();
        this->numOfDependencyMeasures = static_cast<unsigned>(this->dependencyMeasures.size());
    }
    /// Makes the blocks that the k-th column calls for, with the rows of the n-th body of the force, and
    /// moves their values to where `valuesOf` finds them.
    template <class Qe_q, class Qe_qd>
    void addBlocks(const MBS_Body& row, std::size_t n, std::size_t k) {
        const ExpressionLoad::Column& column = load->columns[k];
        auto q = std::make_unique<Qe_q>(*this, row, *column.body, k);
        auto qd = column.needsQd ? std::make_unique<Qe_qd>(*this, row, *column.body, k) : nullptr;
        moveValues(*q, n, column.firstBlock);
        if (qd)
            moveValues(*qd, n, column.firstBlock + 1);
        this->jacobianEntries.push_back({row.bodyIndex, column.body->bodyIndex, std::move(q), std::move(qd)});
    }
    /// Makes room for blocks of this size with the rows of so many bodies.
    void reserveValues(std::size_t numOfRowBodies, std::size_t perBlock) {
        rowBodies = numOfRowBodies;
        valuesPerBlock = perBlock;
        blockValues = std::shared_ptr<double[]>(new double[numOfRowBodies * load->numOfBlocks * perBlock]());
    }
    /// All values of a block of the n-th row body. The blocks of an evaluation lie one behind the other.
    double* valuesOf(std::size_t n, std::size_t blockIndex) const {
        return blockValues.get() + (blockIndex * rowBodies + n) * valuesPerBlock;
    }

  private:
    void moveValues(MBS_GeneralBodyBodyMatrix& target, std::size_t n, std::size_t blockIndex) {
        double* place = valuesOf(n, blockIndex);
        for (const auto& [r, c] : {std::pair(Trans, Trans), {Trans, Rot}, {Rot, Trans}, {Rot, Rot}})
            if (auto* matrix = dynamic_cast<MBM_DenseStandAloneMatrix*>(target.block[r][c].get())) {
                matrix->moveStorage(std::shared_ptr<double[]>(blockValues, place));
                place += std::size_t{matrix->rows} * matrix->cols;
            }
    }

    std::shared_ptr<double[]> blockValues; // of all blocks
    std::size_t rowBodies = 0, valuesPerBlock = 0;
};

/// Root of the derivative blocks of such a force.
template <class Root, class ForceRoot>
class ExpressionForceBlock : public Root {
  public:
    using P = MBS_ModelPhysicalDofVector;
    using C = MBS_ModelConstraintDofVector;

    ExpressionForceBlock(ExpressionForce<ForceRoot>& owner, const MBS_Body& rowBody, const MBS_Body& colBody,
                         std::size_t ownColumn)
        : Root(rowBody, colBody),
          force(&owner),
          column(ownColumn) {}
    /// Refreshes all blocks of this column.
    void updateForBody(double t, const P* q, const P* qd, const P* qdd, const C* multipliers,
                       unsigned) override {
        force->updateColumn(t, q, qd, qdd, multipliers, column);
    }

  private:
    ExpressionForce<ForceRoot>* force; // not owned
    std::size_t column;
};

using SingleLoadBlock = ExpressionForceBlock<MBS_SingleBodyForce_Qe_X, MBS_SingleBodyForce>;
using PairLoadBlock = ExpressionForceBlock<MBS_BodyBodyForce_Qe_X, MBS_BodyBodyForce>;

} // namespace velmora
