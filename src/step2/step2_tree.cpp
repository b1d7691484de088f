// Placeholder: the step-2 decision tree is being written.
