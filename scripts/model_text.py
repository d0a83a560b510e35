"""Writes model files: numbers to full precision, lengths in m, masses in kg, angles in radians."""

import math

UNIT = ((1, 0, 0), (0, 1, 0), (0, 0, 1))
FLAGS = ("dx", "dy", "dz", "ax", "ay", "az")
HINGE_Z = ("dx", "dy", "dz", "ax", "ay")  # free to turn about the joint's z axis
BALL = ("dx", "dy", "dz")


def cross(a, b):
    return (a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0])


def turned_about_z(angle):
    """Axes of a body that is turned about z."""
    c, s = math.cos(angle), math.sin(angle)
    return (c, s, 0.0), (-s, c, 0.0), (0, 0, 1)


def turned_about_x(angle):
    c, s = math.cos(angle), math.sin(angle)
    return (1, 0, 0), (0.0, c, s), (0.0, -s, c)


def frame_with_z(z):
    """Right-handed axes, the last along z."""
    length = math.sqrt(sum(c * c for c in z))
    z = tuple(c / length for c in z)
    helper = (1.0, 0.0, 0.0) if abs(z[0]) < 0.6 else (0.0, 1.0, 0.0)
    x = cross(helper, z)
    length = math.sqrt(sum(c * c for c in x))
    x = tuple(c / length for c in x)
    return x, cross(z, x), z


def to_text(value):
    if isinstance(value, bool):
        return "true" if value else "false"
    if isinstance(value, str):
        return f'"{value}"'
    if isinstance(value, (tuple, list)):
        return "[" + ", ".join(map(to_text, value)) + "]"
    return repr(value)


class ModelText:
    """Collects the blocks of a model file, in the order of the calls."""

    def __init__(self, name, simulation, results):
        self.lines = ["[model]", f"name = {to_text(name)}"]
        self.add("[simulation]", simulation)
        self.add("[results]", results)

    def add(self, head, keys):
        self.lines += ["", head, *(f"{key} = {to_text(value)}" for key, value in keys.items())]

    def body(self, uuid, mass, inertia, center, axes=UNIT, velocity=(0, 0, 0), omega=(0, 0, 0)):
        self.add("[[Body]]", {
            "type": "Rigid_EulerParameter_PAI", "uuid": uuid, "Mass": mass, "Inertia": inertia,
            "LocationCenterMass": center, "OrientationPAI": axes,
            "InitialVelocityVector": velocity, "InitialOmegaVector": omega})

    def flexible_body(self, uuid, modal_file, center, axes=UNIT, velocity=(0, 0, 0), omega=(0, 0, 0), damping="0",
                      coupled=True, quadratic=True):
        """`damping` lists the ratios of the modes; the last one holds for all further modes."""
        self.add("[[Body]]", {
            "type": "MBS_FlexBody_Full", "uuid": uuid, "Is_Itf_active": coupled,
            "Is_QuadraticTermOF_Itt_active": quadratic, "Path2MtxFile": str(modal_file), "LocationCenterMass": center,
            "OrientationPAI": axes, "InitialVelocityVector": velocity, "InitialOmegaVector": omega,
            "GlobalDampingFactor": damping})

    def weld(self, uuid, rigid, flexible, location, node):
        """Of a rigid body to a node of a flexible one."""
        self.add("[[Constraint]]", {
            "type": "FixRiBoFleBo", "uuid": uuid, "BodyIDs": (rigid, flexible), "Location": location,
            "InterfaceNode": node})

    def joint(self, uuid, bodies, location, fixed, axes=UNIT):
        """`fixed` names what the joint holds, out of dx to az, along and about the joint's axes."""
        keys = {"type": "Generic", "uuid": uuid, "BodyIDs": bodies, "Location": location}
        if axes != UNIT:
            keys["ConstraintOrientation"] = axes
        self.add("[[Constraint]]", keys | {f"{flag}Fixed": True for flag in FLAGS if flag in fixed})

    def gear(self, uuid, bodies, axis1, axis2, multiplier, locations):
        self.add("[[Constraint]]", {
            "type": "Gear", "uuid": uuid, "BodyIDs": bodies, "VectorBody1": axis1, "VectorBody2": axis2,
            "Multiplier": multiplier, "LocationBody1": locations[0], "LocationBody2": locations[1]})

    def gravity(self, acceleration, activation_time=None):
        keys = {"type": "Gravity", "uuid": "gravity", "GravityAccVector": acceleration}
        if activation_time is not None:
            keys["ActivationTime"] = activation_time
        self.add("[[Force]]", keys)

    def translation(self, uuid, bodies, coordinate, mode, points):
        """Measure of a position ("disp") or speed ("vel"), along an axis or of the distance ("XYZ")."""
        self.add("[[Measure]]", {
            "type": "Translational", "uuid": uuid, "BodyIDs": bodies, "MeasureCoordinate": coordinate,
            "MeasureMode": mode, "MeasureLocation_Body1": points[0], "MeasureLocation_Body2": points[1]})

    def rotation(self, uuid, bodies, coordinate, vector, plane, from_start=False):
        """Measure of an angle ("Angle") or its rate ("AngleVel") in a plane given by two axes."""
        keys = {"type": "Rotational", "uuid": uuid, "BodyIDs": bodies, "MeasureCoordinate": coordinate,
                "MeasureVec": vector, "MeasurePlaneVec1": plane[0], "MeasurePlaneVec2": plane[1]}
        if from_start:
            keys["UseInitialValueAsOffset"] = True
        self.add("[[Measure]]", keys)

    def force(self, uuid, bodies, expression, points, direction=None):
        """Along the line between the points, or a direction of space."""
        keys = {"type": "GenericForce", "uuid": uuid, "BodyIDs": bodies, "ForceExpression": expression,
                "PointOfApplication_Body1": points[0], "PointOfApplication_Body2": points[1]}
        keys |= ({"ForceDirectionType": "SpaceFixed", "ForceDirection": direction} if direction
                 else {"ForceDirectionType": "In-line-of-sight"})
        self.add("[[Force]]", keys)

    def torque(self, uuid, bodies, expression, axis):
        """About an axis of space."""
        self.add("[[Force]]", {
            "type": "GenericTorque", "uuid": uuid, "BodyIDs": bodies, "TorqueExpression": expression,
            "AxisType": "SpaceFixed", "Axis": axis})

    def motion(self, uuid, bodies, measure, expression, activation_period, point):
        """Lets a measure follow a function of time; between a body and the ground."""
        self.add("[[Constraint]]", {
            "type": "TimeMotion", "uuid": uuid, "BodyIDs": bodies, "Measure": measure,
            "MotionExpression": expression, "ActivationPeriod": activation_period,
            "PointOfApplication_Body1": point})

    def contact(self, uuid, bodies, surfaces, origins, keys):
        """`surfaces`: files, `origins`: where the files' coordinates begin; layers of both bodies are alike."""
        layer = {f"{key}{i}": keys[key] for key in ("YoungsModulus", "PoissonsRatio", "LayerThickness") for i in (1, 2)}
        self.add("[[Force]]", {
            "type": "RigidContact", "uuid": uuid, "BodyIDs": bodies,
            "Path2ContactSurface1": str(surfaces[0]), "Path2ContactSurface2": str(surfaces[1]),
            "PositionContactGraphics1": origins[0], "PositionContactGraphics2": origins[1],
            "IsNumericJacobiRequired": True, **layer,
            **{key: value for key, value in keys.items() if f"{key}1" not in layer}})

    def text(self):
        return "\n".join(self.lines) + "\n"
