// A bar of 0.5 m x 0.02 m x 0.03 m along x, in a regular mesh of bricks with eight corners and twelve middles of edges.
SetFactory("OpenCASCADE");
Point(1) = {0, 0, 0};
Extrude {0.5, 0, 0} { Point{1}; Layers{20}; }
Extrude {0, 0.02, 0} { Curve{1}; Layers{2}; Recombine; }
Extrude {0, 0, 0.03} { Surface{1}; Layers{3}; Recombine; }
Mesh.ElementOrder = 2;
Mesh.SecondOrderIncomplete = 1;
Physical Volume("bar") = {1};
faces() = Boundary { Volume{1}; };
eps = 1e-6;
Physical Surface("first") = Surface In BoundingBox {-eps, -eps, -eps, eps, 0.02 + eps, 0.03 + eps};
Physical Surface("last") = Surface In BoundingBox {0.5 - eps, -eps, -eps, 0.5 + eps, 0.02 + eps, 0.03 + eps};
Mesh.SaveGroupsOfNodes = 1;
