# The providers of the platform layer on Linux, each one line: see qnlib_add_provider in qnLibTargets.cmake.
