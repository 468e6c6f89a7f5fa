// Each generated source file has static functions and data of these names. Where several files are compiled as one,
// CMake defines UNITY_ID anew for each of them, and with it the names differ.
#pragma once

#define UNITY_NAME(name) UNITY_JOIN(name, UNITY_ID)
#define UNITY_JOIN(name, id) UNITY_PASTE(name, id)
#define UNITY_PASTE(name, id) name##_##id

#define addLayoutOwnership UNITY_NAME(addLayoutOwnership)
#define mi_offsets UNITY_NAME(mi_offsets)
#define PyDateTime_ImportAndCheck UNITY_NAME(PyDateTime_ImportAndCheck)
#define removeLayoutOwnership UNITY_NAME(removeLayoutOwnership)
#define removeWidgetFromLayout UNITY_NAME(removeWidgetFromLayout)
#define retrieveObjectName UNITY_NAME(retrieveObjectName)
#define typeNameOf UNITY_NAME(typeNameOf)
