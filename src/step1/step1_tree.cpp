// Placeholder: the step-1 decision tree is being written.
