#include "driver/Linearisation.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <stdexcept>

// Notation: T of `SmallMotions`, dashes for derivatives along the motion; R the residual of `HHTSystem`.
//
// (1)  M^ = T^t M T,   C^ = T^t (2 M T' + D T),   K^ = T^t (M T'' + D T' + K T),   Cq^ = Cq T
// (2)  products with K^: d/dx of T^t R(q + T x, qd + T' x, qdd + T'' x); of C^: T^t R(q, qd + T v, qdd + 2 T'
// v) (3)  dF/dt = (8 (F(h) - F(-h)) - (F(2h) - F(-2h))) / (12 h), at q + qd h + qdd h^2 / 2: the unknown
// third
//      derivative of q costs a term in h^2, which the formula takes out too

namespace velmora::driver {

namespace {

using Matrix = LinearEquations::Matrix;
using Vector = Eigen::VectorXd;

constexpr double positionStep = 1e-6;    // of differences, in sizes of the motions
constexpr double velocityStep = 1e-5;    // the same per second, or per 1 / rate
constexpr double shareOfTime = 1e-3;     // of 1 / rate: step of derivatives along the motion
constexpr double slowestRate = 1e-6;     // 1/s; what moves less is at rest
constexpr double sameProduct = 1e-6;     // relative difference of products that agree
constexpr double negligibleShare = 1e-9; // of the largest row
constexpr double noiseFactor = 10.0;
constexpr unsigned numOfProbes = 2;

/// One block of contributions of the kernel.
class KernelMatrix {
  public:
    /// The mass matrix among the physical codes, with weight 0 if not wanted, makes sure that there are
    /// blocks.
    KernelMatrix(MBS_Model* model, std::vector<unsigned> codes, std::vector<double> weights,
                 unsigned numOfRows, unsigned numOfColumns)
        : rows(numOfRows),
          columns(numOfColumns) {
        const std::vector<unsigned> zeros(codes.size(), 0);
        matrix.reset(model->createModelRelatedMatrix(1, 1, &codes, &zeros, &zeros, &weights, false));
    }

    Matrix evaluate() {
        matrix->update();
        const MBM_SparseMat_CSR3& J = *matrix->getPointerToSparseJacobian();
        std::vector<Eigen::Triplet<double>> entries;
        for (unsigned row = 0; row < rows; ++row)
            for (unsigned k = J.rowIndex[row] - 1; k < J.rowIndex[row + 1] - 1; ++k)
                if (J.values[k] != 0.0)
                    entries.emplace_back(row, J.colIndices[k] - 1, J.values[k]);
        Matrix result(rows, columns);
        result.setFromTriplets(entries.begin(), entries.end());
        return result;
    }

  private:
    unsigned rows, columns;
    std::unique_ptr<MBS_GlobalModelMatrix> matrix;
};

void addProduct(MBS_ModelPhysicalDofVector& to, const Matrix& matrix, const Vector& x, double factor) {
    Eigen::Map<Vector>(to.dofVector->data, matrix.rows()) += factor * (matrix * x);
}

Vector getAbsoluteProduct(const Matrix& matrix, const Vector& x) {
    return matrix.cwiseAbs() * x.cwiseAbs();
}

} // namespace

class Linearisation::Impl {
  public:
    Impl(HHTSystem* equations, PerturbationFrame frame);
    LinearEquations compute(const HHTState& state);

  private:
    enum class Order { Position, Velocity };
    void measureSizes(const HHTState& state);
    double measureRate(const HHTState& state) const;
    void evaluateAt(const HHTState& state);
    void selectRows();
    void computeRates(const HHTState& state, LinearEquations& out);
    Vector difference(const HHTState& state, Order order, const Vector& x, double step);
    bool agrees(const HHTState& state, Order order, const Matrix& matrix);
    void completeByDifferences(const HHTState& state, Order order, LinearEquations& out);
    double getStep(Order order) const {
        return order == Order::Position ? positionStep : velocityStep * std::max(1.0, rate);
    }

    HHTSystem* system; // not owned
    SmallMotions motions, shifted;
    unsigned n, c;
    KernelMatrix mass, stiffness, damping, jacobian;
    Matrix selection; // rows of Cq that count: constraints of joints that aren't left out
    Vector sizes;     // per motion: what is as large as 1 rad
    double length = 1.0, rate = 0.0;
};

Linearisation::Impl::Impl(HHTSystem* equations, PerturbationFrame frame)
    : system(equations),
      motions(equations->getModel(), frame),
      shifted(equations->getModel(), frame),
      n(equations->getNumOfPhysicalDof()),
      c(equations->getNumOfConstraints()),
      mass(equations->getModel(), {MassMatrix}, {1.0}, n, n),
      stiffness(equations->getModel(),
                {MassMatrix, InertiaForce_q, VelInertiaForce_q, InnerConstraintForce_q, ElasticForce_q,
                 ExternalForce_q, ExternalConstraintForce_q},
                {0.0, 1.0, -1.0, 1.0, 1.0, -1.0, 1.0}, n, n),
      damping(equations->getModel(), {MassMatrix, VelInertiaForce_qd, DampingForce_qd, ExternalForce_qd},
              {0.0, -1.0, 1.0, -1.0}, n, n),
      jacobian(equations->getModel(), {ConstraintJacobian}, {1.0}, c, n) {}

void Linearisation::Impl::measureSizes(const HHTState& state) {
    length = system->measureTypicalLength(state.q);
    sizes.setConstant(motions.getNumOfMotions(), 1.0);
    for (unsigned body = 0; body < system->bodyMasses.size(); ++body) {
        const unsigned first = motions.bodyOffset[body];
        sizes.segment<3>(first).setConstant(length);
        for (unsigned i = first + 6; i < motions.bodyOffset[body + 1]; ++i) {
            const double modalMass = system->modalMasses[state.q.bodyOffset[body] + 7 + (i - first - 6)];
            if (modalMass > 0.0 && system->bodyMasses[body] > 0.0)
                sizes[i] = length * std::sqrt(system->bodyMasses[body] / modalMass);
        }
    }
}

double Linearisation::Impl::measureRate(const HHTState& state) const {
    // Rates of Euler parameters of norm 1 are half the angular velocity.
    const Eigen::Map<const Vector> v(state.qd.dofVector->data, n), a(state.qdd.dofVector->data, n);
    double largest = 0.0;
    for (unsigned body = 0; body < system->bodyMasses.size(); ++body) {
        const unsigned first = state.q.bodyOffset[body], motion = motions.bodyOffset[body];
        const auto take = [&](unsigned at, unsigned count, double size) {
            largest = std::max(
                {largest, v.segment(at, count).norm() / size, std::sqrt(a.segment(at, count).norm() / size)});
        };
        take(first, 3, length);
        take(first + 3, 4, 0.5);
        for (unsigned i = 6; i < motions.bodyOffset[body + 1] - motion; ++i)
            take(first + 1 + i, 1, sizes[motion + i]);
    }
    return largest > slowestRate ? largest : 0.0;
}

void Linearisation::Impl::evaluateAt(const HHTState& state) {
    if (!system->evaluate(state))
        throw std::domain_error("the forces near the state aren't finite");
}

void Linearisation::Impl::selectRows() {
    unsigned numOfNorms = 0;
    const MBS_Model* model = system->getModel();
    for (unsigned body = 0; body < model->getNumOfBodies(); ++body)
        numOfNorms += model->getNumOfInnerConstraintDofOfBody(body);
    std::vector<bool> isLeftOut(c, false);
    for (const unsigned equation : system->getLeftOut())
        isLeftOut[equation] = true;
    std::vector<Eigen::Triplet<double>> entries;
    for (unsigned equation = numOfNorms; equation < c; ++equation)
        if (!isLeftOut[equation])
            entries.emplace_back(static_cast<int>(entries.size()), equation, 1.0);
    selection.resize(static_cast<Eigen::Index>(entries.size()), c);
    selection.setFromTriplets(entries.begin(), entries.end());
}

LinearEquations Linearisation::Impl::compute(const HHTState& state) {
    LinearEquations out;
    motions.update(state);
    measureSizes(state);
    selectRows();
    out.rate = rate = measureRate(state);
    out.bodyOffset = motions.bodyOffset;
    computeRates(state, out);
    evaluateAt(state);
    system->getModel()->updateMatricesForJacobian(state.time, &state.q, &state.qd, &state.qdd, &state.lambda);
    const Matrix M = mass.evaluate(), D = damping.evaluate(), K = stiffness.evaluate();
    const Matrix T = motions.T, Tt = T.transpose();
    out.M = Tt * (M * T); // (1)
    out.Cq = selection * (jacobian.evaluate() * T);
    out.C = Tt * Matrix(2.0 * (M * motions.rate) + D * T);
    out.K = Tt * Matrix(M * motions.acceleration + D * motions.rate + K * T);
    out.isByDifferences = !agrees(state, Order::Position, out.K) || !agrees(state, Order::Velocity, out.C);
    if (out.isByDifferences)
        for (const Order order : {Order::Position, Order::Velocity})
            completeByDifferences(state, order, out);
    evaluateAt(state);
    return out;
}

void Linearisation::Impl::computeRates(const HHTState& state, LinearEquations& out) { // (3)
    out.MRate.resize(motions.getNumOfMotions(), motions.getNumOfMotions());
    out.CqRate.resize(selection.rows(), motions.getNumOfMotions());
    if (rate == 0.0)
        return;
    const double h = shareOfTime / rate;
    constexpr std::array<std::pair<double, double>, 4> points = {
        {{-2.0, 1.0 / 12.0}, {-1.0, -8.0 / 12.0}, {1.0, 8.0 / 12.0}, {2.0, -1.0 / 12.0}}};
    HHTState near = state;
    for (const auto& [place, weight] : points) {
        const double t = place * h;
        for (unsigned i = 0; i < n; ++i) {
            const double v = state.qd.dofVector->data[i], a = state.qdd.dofVector->data[i];
            near.q.dofVector->data[i] = state.q.dofVector->data[i] + t * (v + 0.5 * t * a);
            near.qd.dofVector->data[i] = v + t * a;
        }
        evaluateAt(near);
        system->getModel()->updateMatricesForJacobian(near.time, &near.q, &near.qd, &near.qdd, &near.lambda);
        shifted.update(near);
        const Matrix T = shifted.T, Tt = T.transpose();
        out.MRate += weight / h * Matrix(Tt * (mass.evaluate() * T));
        out.CqRate += weight / h * Matrix(selection * (jacobian.evaluate() * T));
    }
}

/// Change of the forces by motions of one order along x, per unit of x.
Vector Linearisation::Impl::difference(const HHTState& state, Order order, const Vector& x,
                                       double step) { // (2)
    HHTState near = state;
    std::array<Vector, 2> R;
    for (unsigned side = 0; side < 2; ++side) {
        const double h = side == 0 ? step : -step;
        near.q = state.q;
        near.qd = state.qd;
        near.qdd = state.qdd;
        if (order == Order::Position) {
            addProduct(near.q, motions.T, x, h);
            addProduct(near.qd, motions.rate, x, h);
            addProduct(near.qdd, motions.acceleration, x, h);
        } else {
            addProduct(near.qd, motions.T, x, h);
            addProduct(near.qdd, motions.rate, x, 2.0 * h);
        }
        evaluateAt(near);
        R[side] = Eigen::Map<const Vector>(system->residual.dofVector->data, n);
    }
    return motions.T.transpose() * ((R[0] - R[1]) / (2.0 * step));
}

/// Compares products of the matrix and of the forces with random motions, row by row.
bool Linearisation::Impl::agrees(const HHTState& state, Order order, const Matrix& matrix) {
    std::minstd_rand generator;
    std::uniform_real_distribution<double> number(-1.0, 1.0);
    const double step = getStep(order);
    for (unsigned probe = 0; probe < numOfProbes; ++probe) {
        Vector x(sizes.size());
        for (Eigen::Index i = 0; i < x.size(); ++i)
            x[i] = number(generator) * sizes[i];
        const Vector wanted = difference(state, order, x, step);
        const Vector coarse = difference(state, order, x, 2.0 * step);
        const Vector rows = sizes.cwiseProduct(getAbsoluteProduct(matrix, x));
        const Vector error = sizes.cwiseProduct((matrix * x - wanted).cwiseAbs());
        const Vector noise = sizes.cwiseProduct((wanted - coarse).cwiseAbs());
        const double floor = negligibleShare * rows.maxCoeff() + noiseFactor * noise.maxCoeff();
        for (Eigen::Index i = 0; i < x.size(); ++i)
            if (error[i] > sameProduct * rows[i] + floor)
                return false;
    }
    return true;
}

/// Takes differences where the matrix doesn't agree with them, beyond what they are sure of.
void Linearisation::Impl::completeByDifferences(const HHTState& state, Order order, LinearEquations& out) {
    Matrix& matrix = order == Order::Position ? out.K : out.C;
    const Vector masses = out.M.diagonal().cwiseSqrt();
    std::vector<Eigen::Triplet<double>> entries;
    for (Eigen::Index j = 0; j < sizes.size(); ++j) {
        const Vector x = Vector::Unit(sizes.size(), j);
        const double step = getStep(order) * sizes[j];
        const Vector fine = difference(state, order, x, step);
        const Vector noise = sizes.cwiseProduct(fine - difference(state, order, x, 2.0 * step)).cwiseAbs();
        const Vector own = matrix.col(j);
        for (Eigen::Index i = 0; i < own.size(); ++i) {
            const double doubt = noiseFactor * noise.maxCoeff() / sizes[i];
            const bool isSame = std::fabs(fine[i] - own[i]) <= sameProduct * std::fabs(own[i]) + doubt;
            if (const double value = isSame ? own[i] : fine[i]; value != 0.0)
                entries.emplace_back(i, j, value);
            if (order == Order::Position)
                out.doubt = std::max(out.doubt, doubt / (masses[i] * masses[j]));
        }
    }
    matrix.setFromTriplets(entries.begin(), entries.end());
}

Linearisation::Linearisation(HHTSystem* system, PerturbationFrame frame)
    : impl(std::make_unique<Impl>(system, frame)) {}

Linearisation::~Linearisation() = default;

LinearEquations Linearisation::compute(const HHTState& state) {
    return impl->compute(state);
}

} // namespace velmora::driver
