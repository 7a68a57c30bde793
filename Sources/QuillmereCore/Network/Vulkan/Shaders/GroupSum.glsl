shared float groupSums[groupThreads];

// The sum of value over the group, in a fixed order, for every thread. Every thread must call it.
float groupSum(float value) {
    const uint thread = gl_LocalInvocationID.x;
    groupSums[thread] = value;
    barrier();
    for (uint half_ = groupThreads / 2; half_ > 0; half_ /= 2) {
        if (thread < half_) groupSums[thread] += groupSums[thread + half_];
        barrier();
    }
    const float sum = groupSums[0];
    barrier();
    return sum;
}
