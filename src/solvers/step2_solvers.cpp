// Placeholder: the step-2 solvers are being written.
