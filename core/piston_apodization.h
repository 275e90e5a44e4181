// How the velocity of a circular piston falls off towards its rim.
#pragma once

// r is the distance from the axis, a the piston's radius. Profiles and derivatives with respect to r are 0 unless
// |r| < a; each profile falls from 1 at the centre to 0 at the rim.
namespace piston_apodization {

// Profile 1 cosine, 2 raised cosine, 3 quadratic, 4 quartic. Any other index is the uniform piston: 1 for every r.
double evaluate(int index, double r, double a);
double derivative(int index, double r, double a);  // 0 for any other index

double cosine(double r, double a);
double raisedcosine(double r, double a);
double quadratic(double r, double a);
double quartic(double r, double a);

double derivativecosine(double r, double a);
double derivativeraisedcosine(double r, double a);
double derivativequadratic(double r, double a);
double derivativequartic(double r, double a);

}  // namespace piston_apodization
