// The functions that a plug-in library exports; all that is compiled for each of them alone.
class QObject;

const char* verificationText();
QObject* rootObject();
void functionThatIsNowhere();

extern "C" {

__attribute__((visibility("default"))) const char* qt_plugin_query_verification_data() {
#ifdef MISSING_FUNCTION
    functionThatIsNowhere();
#endif
    return verificationText();
}

__attribute__((visibility("default"))) QObject* qt_plugin_instance() {
    return rootObject();
}
}
