// Enabling and disabling plugins, per-plugin features and error reports.
#ifndef TOKA_LOADER_ENABLING_H
#define TOKA_LOADER_ENABLING_H

void TOKAEnableAllPlugins();
void TOKADisableAllPlugins();
void TOKAEnableACFPlugins();
void TOKADisableACFPlugins();

int TOKAFeatureToID(const char* name);
int TOKAHasFeatureInternal(int plugin, int feature);
// True unless the calling plugin asked for native paths.
int TOKANeedPathConvert();

enum { TOKAFeatureWantsReflections = 0, TOKAFeatureUseNativePaths = 1 };

// Reports a mistake to the calling plugin's error callback, if it has one.
void TOKASendError(const char* message);
// 1 if the calling plugin has an error callback: some checks run only then.
int TOKAHasError();

#endif
