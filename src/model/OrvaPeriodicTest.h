#pragma once

// A component that fails at a constant rate, is tested at a fixed interval and repaired at a
// constant rate. Dates and durations are in the model's time unit, rates are per time unit.
struct OrvaPeriodicTest {
  double failureRate;                  // λ in operation
  double failureRateInTest;            // λ during a test
  double repairRate;                   // μ
  double interval;                     // between the starts of two tests
  double firstTest;                    // date of the first test
  double probabilityOfFailureByTest;   // a test may break what it tests
  double duration;                     // of a test; 0 for one that takes no time
  bool isAvailableInTest;              // whether the component does its work while it is tested
  double probabilityOfDetection;       // that a test finds a failure
  double probabilityOfBadRestoration;  // that a repair leaves the component failed
};

// The unavailability of the component at date t. Rates, dates and durations must not be negative,
// probabilities must lie in [0, 1]; what is NaN passes.
double OrvaComputeUnavailability(const OrvaPeriodicTest& test, double t);
