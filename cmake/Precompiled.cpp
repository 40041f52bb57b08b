// The only source of the targets that precompile headers for other targets.
