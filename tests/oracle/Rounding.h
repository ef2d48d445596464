// The rounding rules of the plain engine, each written out where it is needed, none shared with the library.

#pragma once

namespace oracle {

// Toward zero; what int cannot hold becomes its nearest end, what is no number 0.
int toInt(double x);

// Equal up to tolerance machine epsilons of the larger magnitude. Zero equals zero alone.
bool almostEqual(double a, double b, double tolerance);

// The nearest integer when x is that integer up to 100 epsilons, else x cut toward zero.
int roundedDown(double x);

// The nearest integer when x is that integer up to 100 epsilons, else x cut toward zero, plus 1.
int roundedUp(double x);

// The count that a set needs to survive a pruning with this threshold.
int pruningMinimum(double minCount);

}  // namespace oracle
