extern "C" __attribute__((visibility("default"))) int answerOfSamplePlugin();

int answerOfSamplePlugin() {
    return 42;
}
