// What the shaders beside the product share: groups of 128 threads, counted along one line.
layout(local_size_x = 128) in;
const uint groupThreads = 128;

uint groupNumber() {
    return gl_WorkGroupID.y * gl_NumWorkGroups.x + gl_WorkGroupID.x;
}

uint itemNumber() {
    return groupNumber() * groupThreads + gl_LocalInvocationID.x;
}
