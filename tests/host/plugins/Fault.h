#pragma once

class QObject;

/// What is wrong with a plug-in library of the loader's tests. The functions that each of them
/// exports stand in fault.cpp, which is all that is compiled for one of them alone.
enum class Fault {
    None,
    WrongText,
    LongerText,
    EmptyText,
    NullText,
    TextThrows,
    NullInstance,
    InstanceThrows,
    NoInterface,
    OtherInterfaceVersion,
    KeysThrow,
    NoKeys,
    EmptyKey,
    SameKeyTwice,
    CreateFails,
    SecondCreateFails,
    CreateGivesNull,
    CreateThrows,
    CreateThrowsNumber,
    SameManipulatorTwice,
    TypeIdZero,
    SameTypeIdTwice,
    InitThrows,
    DefaultsFail,
    NeverRegisters,
    MissingFunction,
};

extern const Fault kFault;

const char* verificationText();
QObject* rootObject();
void functionThatIsNowhere();
