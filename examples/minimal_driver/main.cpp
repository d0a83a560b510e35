// A driver in its smallest form: one spinning rigid body falls, and its height is compared with -g t^2 / 2.
//
// The accelerations come from the equations of motion and the constraints at acceleration level,
//
//     | M   Cq' | | qdd    |   | Q_velInertia + Q_external     |
//     | Cq  0   | | lambda | = | -(dCq/dt) qd - second t-term  |
//
// and the step is the Taylor step q += h qd + h^2/2 qdd, qd += h qdd: exact for free fall, of first order for
// the rotation. A driver for real use takes an implicit method and a sparse solver.

#include <velmora/velmora.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <memory>
#include <string>
#include <utility>
#include <vector>

using namespace velmora;

namespace {

void fillDataModel(IO_DataModel& data) {
    IO_DataModelBlock* body = data.addBlock("Body", "Rigid_EulerParameter_PAI", "stone", "stone", ".");
    body->addKeyValue("Mass", "2.0");
    body->addKeyValue("Inertia", "0.1, 0.2, 0.3");
    body->addKeyValue("LocationCenterMass", "0, 0, 0");
    body->addKeyValue("OrientationPAI", "1, 0, 0, 0, 1, 0, 0, 0, 1"); // column after column
    body->addKeyValue("InitialVelocityVector", "0, 0, 0");
    body->addKeyValue("InitialOmegaVector", "0, 1, 0.1");

    IO_DataModelBlock* gravity = data.addBlock("Force", "Gravity", "gravity", "gravity", ".");
    gravity->addKeyValue("GravityAccVector", "0, 0, -9.81");
}

// Solves A x = b by elimination with row exchanges; A is row after row, and x replaces b.
bool solve(std::vector<double>& A, std::vector<double>& b) {
    const std::size_t n = b.size();
    for (std::size_t k = 0; k < n; ++k) {
        std::size_t pivot = k;
        for (std::size_t i = k + 1; i < n; ++i)
            if (std::fabs(A[i * n + k]) > std::fabs(A[pivot * n + k]))
                pivot = i;
        if (A[pivot * n + k] == 0.0)
            return false;
        std::swap_ranges(&A[k * n], &A[k * n] + n, &A[pivot * n]);
        std::swap(b[k], b[pivot]);
        for (std::size_t i = k + 1; i < n; ++i) {
            const double factor = A[i * n + k] / A[k * n + k];
            for (std::size_t j = k; j < n; ++j)
                A[i * n + j] -= factor * A[k * n + j];
            b[i] -= factor * b[k];
        }
    }
    for (std::size_t k = n; k-- > 0;) {
        for (std::size_t j = k + 1; j < n; ++j)
            b[k] -= A[k * n + j] * b[j];
        b[k] /= A[k * n + k];
    }
    return true;
}

class Stepper {
  public:
    explicit Stepper(MBS_Model& aModel)
        : model(aModel),
          q(&model),
          qd(&model),
          qdd(&model),
          forces(&model),
          inertia(&model),
          multipliers(&model),
          residual(&model),
          cqdQd(&model),
          timeTerm(&model) {
        // Block row 0 and column 0 stand for the coordinates, block row 1 and column 1 for the constraints.
        const std::vector<unsigned> codes{MassMatrix, ConstraintJacobianT, ConstraintJacobian};
        const std::vector<unsigned> rows{0, 0, 1}, cols{0, 1, 0};
        const std::vector<double> weights{1.0, 1.0, 1.0};
        matrix.reset(model.createModelRelatedMatrix(2, 2, &codes, &rows, &cols, &weights, false));
        model.copyInitialDataIntoPhysicalDofVector(&q, &qd);
        std::fill_n(qdd.dofVector->data, qdd.getNumOfDof(), 0.0);
        std::fill_n(multipliers.dofVector->data, multipliers.getNumOfConstraints(), 0.0);
    }

    bool step(double t, double h) {
        if (!computeAccelerations(t))
            return false;
        for (unsigned i = 0; i < q.getNumOfDof(); ++i) {
            q.dofVector->data[i] += h * qd.dofVector->data[i] + 0.5 * h * h * qdd.dofVector->data[i];
            qd.dofVector->data[i] += h * qdd.dofVector->data[i];
        }
        model.setTimeOfLastSuccessfulStep(t + h);
        return true;
    }
    double height() const { return q.bodyData(0)[2]; }

  private:
    bool computeAccelerations(double t) {
        model.updateMatricesForEquationOfMotionAndComputeResiduumForConstrDOF(t, &q, &qd, &qdd, &residual);
        model.getExternalForces(t, &q, &qd, &qdd, &forces);
        model.getVelInertiaForces(&q, &qd, &inertia);
        model.getCqdT_Mult_Qd(&q, &qd, &qdd, &cqdQd);
        model.get_C_t_order2(t, &q, &qd, &qdd, &timeTerm);
        model.updateMatricesForJacobian(t, &q, &qd, &qdd, &multipliers);
        matrix->update();

        const unsigned numDof = q.getNumOfDof(), n = numDof + multipliers.getNumOfConstraints();
        std::vector<double> A(std::size_t{n} * n), x(n);
        for (unsigned i = 0; i < n; ++i) {
            for (unsigned j = 0; j < n; ++j)
                A[std::size_t{i} * n + j] = matrix->getPointerToSparseJacobian()->getValue(i, j);
            x[i] = i < numDof ? inertia.dofVector->data[i] + forces.dofVector->data[i]
                              : -cqdQd.dofVector->data[i - numDof] - timeTerm.dofVector->data[i - numDof];
        }
        if (!solve(A, x))
            return false;
        std::copy_n(x.begin(), numDof, qdd.dofVector->data);
        std::copy(x.begin() + numDof, x.end(), multipliers.dofVector->data);
        return true;
    }

    MBS_Model& model;
    MBS_ModelPhysicalDofVector q, qd, qdd, forces, inertia;
    MBS_ModelConstraintDofVector multipliers, residual, cqdQd, timeTerm;
    std::unique_ptr<MBS_GlobalModelMatrix> matrix;
};

} // namespace

int main() {
    IO_DataModel data("falling stone");
    fillDataModel(data);
    IO_OutputManager output(".", "falling_stone");
    const std::unique_ptr<MBS_Model> model(MBS_Model::makeModel(&data, &output));
    if (model->isErrorOccured())
        return 1; // the output manager has printed why

    Stepper stepper(*model);
    const unsigned numSteps = 1000;
    const double h = 1.0e-3;
    for (unsigned n = 0; n < numSteps; ++n)
        if (!stepper.step(n * h, h))
            return 3;
    const double t = numSteps * h, exact = -0.5 * 9.81 * t * t;
    std::printf("velmora %s: height %.9f, exact %.9f\n", getVersionText(), stepper.height(), exact);
    return std::fabs(stepper.height() - exact) < 1.0e-9 ? 0 : 3;
}
