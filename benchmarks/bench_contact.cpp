// Two balls in light contact: an evaluation of force and derivatives against the number of triangles of each.

#include <benchmark/benchmark.h>
#include <velmora/platform/PCM_Contact.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

namespace velmora {
namespace {

constexpr double radius = 0.1;

/// A ball of 12 n^2 triangles: the squares on the faces of a cube, of equal angle.
std::string writeBall(int n) {
    std::string name = (std::filesystem::temp_directory_path() / "ballXXXXXX.obj").string();
    const int descriptor = mkstemps(name.data(), 4);
    std::FILE* file = fdopen(descriptor, "w");
    for (int axis = 0; axis < 3; ++axis)
        for (const double side : {-1.0, 1.0})
            for (int i = 0; i < n * n * 4; ++i) {
                const int corner = i % 4, square = i / 4;
                const double a = 2.0 * (square % n + (corner % 3 == 0 ? 0 : 1)) / n - 1;
                const double b = 2.0 * (square / n + corner / 2) / n - 1;
                double x[3];
                x[axis] = std::tan(side * M_PI / 4);
                x[(axis + 1) % 3] = std::tan((side > 0 ? a : b) * M_PI / 4);
                x[(axis + 2) % 3] = std::tan((side > 0 ? b : a) * M_PI / 4);
                const double scale = radius / std::sqrt(x[0] * x[0] + x[1] * x[1] + x[2] * x[2]);
                std::fprintf(file, "v %.17g %.17g %.17g\n", x[0] * scale, x[1] * scale, x[2] * scale);
                if (corner == 3)
                    std::fputs("f -4 -3 -2 -1\n", file);
            }
    std::fclose(file);
    return name;
}

class Pair {
  public:
    explicit Pair(benchmark::State& state) : handle(nullptr, &std::free) {
        const std::string name = writeBall(static_cast<int>(state.range(0)));
        const double zero[3]{}, unit[9]{1, 0, 0, 0, 1, 0, 0, 0, 1};
        handle.reset(PCM_Contact_Create(0, "balls", name.c_str(), name.c_str(), 1e7, 1e7, 0.3, 0.3, 0.01,
                                        0.01, 0.01, 1e3, 1e3, 2, 1e-3, 0.3, 0.01, zero, unit, zero, unit,
                                        zero, unit, zero, unit));
        std::filesystem::remove(name);
        state.counters["triangles"] = 12.0 * static_cast<double>(state.range(0) * state.range(0));
    }
    void* get() const { return handle.get(); }

    /// Centres apart by 1.98 radii, neither ball in line with the global axes.
    static constexpr double q1[7]{0, 0, 1.98 * radius, 0.8, 0.36, 0.48, 0}, q2[7]{0, 0, 0, 1, 0, 0, 0};
    static constexpr double qd1[7]{0.1, 0, -0.1, 0, 0, 0.2, 0}, qd2[7]{};

  private:
    std::unique_ptr<void, decltype(&std::free)> handle;
};

template <class Update>
void run(benchmark::State& state, const Update& update) {
    const Pair pair(state);
    if (!pair.get()) {
        state.SkipWithError("no contact");
        return;
    }
    for (auto _ : state)
        update(pair.get(), Pair::q1, Pair::q2, Pair::qd1, Pair::qd2);
    if (PCM_Contact_IsInContact(pair.get()) == 0)
        state.SkipWithError("the balls don't touch");
}

void contactForce(benchmark::State& state) {
    run(state, PCM_Contact_UpdateContactForce);
}

void contactJacobian(benchmark::State& state) {
    run(state, PCM_Contact_UpdateContactForceJacobian);
}

// 41 gives 20,172 triangles.
BENCHMARK(contactForce)->Arg(10)->Arg(20)->Arg(41)->Arg(82)->Unit(benchmark::kMicrosecond);
BENCHMARK(contactJacobian)->Arg(10)->Arg(20)->Arg(41)->Unit(benchmark::kMicrosecond);

} // namespace
} // namespace velmora
