/* Drag of the air on a body: against its velocity v relative to the wind w, and as its square.
 *
 *     F = -c |v - w| (v - w)
 *
 * In the global frame. Measures: 0 to 2 the components of v. The parameter file holds c and the three of w.
 */

#include <velmora/external_forces/ExternalSubroutine.h>

#include <math.h>
#include <stdio.h>

enum { mostForces = 1000 };

struct Drag {
    double c;        /* kg/m */
    double wind[3];  /* m/s */
    double force[3]; /* the last one, for the result file */
};

static struct Drag drags[mostForces];
static int32_t numOfDrags = 0;

/* The interface has no way to report an error: without a number the run stops by itself. */
static void makeUseless(struct Drag* drag, const char* reason) {
    fprintf(stderr, "air_drag: %s\n", reason);
    drag->c = NAN;
}

static void read(const char* path, struct Drag* drag) {
    FILE* file = fopen(path, "r");
    double* w = drag->wind;
    int found = file ? fscanf(file, "%lf %lf %lf %lf", &drag->c, &w[0], &w[1], &w[2]) : 0;
    if (file)
        fclose(file);
    if (found != 4)
        makeUseless(drag, "the parameter file must hold four numbers: c and the wind's three");
}

/* Velocity relative to the air, and its length. */
static double relative(const struct Drag* drag, const double* measures, double* v) {
    for (int i = 0; i < 3; ++i)
        v[i] = measures[i] - drag->wind[i];
    return sqrt(v[0] * v[0] + v[1] * v[1] + v[2] * v[2]);
}

void createExteralSubroutine(const uint32_t* numOfMeasures, const char* parameterPath, int32_t* objectId) {
    /* Further ones share the last place, which is of no use then. */
    int32_t id = numOfDrags < mostForces ? numOfDrags++ : mostForces - 1;
    *objectId = id;
    if (id == mostForces - 1)
        makeUseless(&drags[id], "too many forces");
    else if (*numOfMeasures != 3)
        makeUseless(&drags[id], "three measures are needed");
    else
        read(parameterPath, &drags[id]);
}

void get3x1ForceVector(const int32_t* objectId, const double* t, const double* measures, double* force) {
    struct Drag* drag = &drags[*objectId];
    double v[3];
    double speed = relative(drag, measures, v);
    (void)t;
    for (int i = 0; i < 3; ++i)
        force[i] = drag->force[i] = -drag->c * speed * v[i];
}

void get3x1TorqueVector(const int32_t* objectId, const double* t, const double* measures, double* torque) {
    (void)objectId, (void)t, (void)measures;
    torque[0] = torque[1] = torque[2] = 0.0;
}

/* dF_i/dv_k = -c (|v| delta_ik + v_i v_k / |v|), which goes to zero with v. */
void get3x1ForceDerivative(const int32_t* objectId, const double* t, const double* measures,
                           const uint32_t* measure, double* derivative) {
    const struct Drag* drag = &drags[*objectId];
    uint32_t k = *measure;
    double v[3];
    double speed = relative(drag, measures, v);
    (void)t;
    for (uint32_t i = 0; i < 3; ++i)
        derivative[i] = speed > 0.0 ? -drag->c * ((i == k ? speed : 0.0) + v[i] * v[k] / speed) : 0.0;
}

void get3x1TorqueDerivative(const int32_t* objectId, const double* t, const double* measures,
                            const uint32_t* measure, double* derivative) {
    (void)objectId, (void)t, (void)measures, (void)measure;
    derivative[0] = derivative[1] = derivative[2] = 0.0;
}

void get3x1ForceAndTorqueVector4ResultFile(const int32_t* objectId, double* force, double* torque) {
    for (int i = 0; i < 3; ++i) {
        force[i] = drags[*objectId].force[i];
        torque[i] = 0.0;
    }
}

void setTimeOfLastSuccessfulStep(const int32_t* objectId, const double* t) {
    (void)objectId, (void)t;
}
