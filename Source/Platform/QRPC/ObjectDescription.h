#pragma once

class QByteArray;
class QDataStream;

/// Reads what a packet of the type InitDynamic says after the name of the object: what it looks like,
/// and the values of its properties. Returns whether Qt Remote Objects can make a replica of it: it
/// follows what is said there, registers the types, and makes room for the counts.
///
/// Limits: 10,000 signals, methods and properties, names of 1,000 bytes. Types of properties, and
/// types with a meta-object of their own, have to be known here; enumerations do not travel.
///
/// @param unknownHere  gets the name of a type that is not registered here, where that is what is wrong
/// @param unknownThere the same for one that the other process has not registered: it knows no value of it
bool isObjectDescription(QDataStream &packet, QByteArray *unknownHere, QByteArray *unknownThere);
