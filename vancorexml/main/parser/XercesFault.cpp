#include "vancorexml/main/parser/XercesFault.h"

#include <xercesc/framework/XMLErrorCodes.hpp>
#include <xercesc/framework/XMLValidityCodes.hpp>
#include <xercesc/util/XMLExceptMsgs.hpp>

using xercesc::XMLErrs;
using xercesc::XMLValid;

bool IsContentFault(const XercesFault& fault) noexcept
{
    switch (fault.code) {
    case XMLValid::ElementNotValidForContent:
    case XMLValid::NotEnoughElemsForCM:
    case XMLValid::EmptyNotValidForContent:
    case XMLValid::SimpleTypeHasChild:
    case XMLValid::EmptyElemHasContent:
    case XMLValid::ElemChildrenHasInvalidWS:
    case XMLValid::NilAttrNotEmpty:
    case XMLValid::NonWSContent: return fault.isValidity;
    default: return false;
    }
}

bool IsTextFault(const XercesFault& fault) noexcept
{
    return fault.isValidity && fault.code == XMLValid::NoCharDataInCM;
}

bool IsAboutKeys(DiagnosticCode code) noexcept
{
    return code == DiagnosticCode::DuplicateKey || code == DiagnosticCode::MissingKey ||
        code == DiagnosticCode::UnknownReference;
}

DiagnosticCode CodeOf(const XercesFault& fault) noexcept
{
    if (fault.isOfValue && fault.code == xercesc::XMLExcepts::VALUE_ID_Not_Unique)
        return DiagnosticCode::DuplicateKey;
    if (fault.isOfValue)
        return DiagnosticCode::BadValue;
    if (!fault.isValidity) {
        switch (fault.code) {
        case XMLErrs::ContradictoryEncoding: return DiagnosticCode::WrongEncoding;
        case XMLErrs::EntityExpansionLimitExceeded: return DiagnosticCode::ExpansionLimit;
        case XMLErrs::EntityNotFound: return DiagnosticCode::UnknownEntity;
        case XMLErrs::RecursiveEntity: return DiagnosticCode::RecursiveEntity;
        case XMLErrs::ExpectedEndOfTagX: return DiagnosticCode::MismatchedEndTag;
        case XMLErrs::UnknownPrefix: return DiagnosticCode::UndeclaredPrefix;
        case XMLErrs::AttrAlreadyUsedInSTag: return DiagnosticCode::DuplicateAttribute;
        case XMLErrs::InvalidCharacter:
        case XMLErrs::InvalidCharacterInAttrValue: return DiagnosticCode::InvalidCharacter;
        case XMLErrs::InvalidCharacterRef:
        case XMLErrs::BadDigitForRadix: return DiagnosticCode::BadCharacterReference;
        case XMLErrs::BadXMLEncoding: return DiagnosticCode::UnknownEncoding;
        case XMLErrs::NoEmptyStrNamespace:
        case XMLErrs::NoUseOfxmlnsAsPrefix:
        case XMLErrs::NoUseOfxmlnsURI:
        case XMLErrs::PrefixXMLNotMatchXMLURI:
        case XMLErrs::XMLURINotMatchXMLPrefix:
        case XMLErrs::NoXMLNSAsElementPrefix:
        case XMLErrs::ColonNotLegalWithNS: return DiagnosticCode::BadNamespace;
        case XMLErrs::UnterminatedDOCTYPE:
        case XMLErrs::InvalidCharacterInIntSubset:
        case XMLErrs::ExpectedMarkupDecl:
        case XMLErrs::UnterminatedEntityDecl:
        case XMLErrs::UnterminatedElementDecl:
        case XMLErrs::ExpectedContentSpecExpr:
        case XMLErrs::UnterminatedContentModel:
        case XMLErrs::ExpectedSystemOrPublicId:
        case XMLErrs::InvalidRootElemInDOCTYPE:
        case XMLErrs::NoRootElemInDOCTYPE:
        case XMLErrs::ExpectedAttributeType:
        case XMLErrs::ExpectedDefAttrDecl: return DiagnosticCode::BadDocumentType;
        default: return DiagnosticCode::Other;
        }
    }
    switch (fault.code) {
    case XMLValid::ElementNotDefined:
    case XMLValid::GrammarNotFound:
    case XMLValid::UndeclaredElemInDocType: return DiagnosticCode::UndeclaredElement;
    case XMLValid::ReusedIDValue:
    case XMLValid::IC_DuplicateUnique:
    case XMLValid::IC_DuplicateKey: return DiagnosticCode::DuplicateKey;
    case XMLValid::IC_FieldMultipleMatch:
    case XMLValid::IC_UnknownField:
    case XMLValid::IC_AbsentKeyValue:
    case XMLValid::IC_KeyNotEnoughValues:
    case XMLValid::IC_KeyMatchesNillable: return DiagnosticCode::MissingKey;
    case XMLValid::IDNotDeclared:
    case XMLValid::IC_KeyRefOutOfScope:
    case XMLValid::IC_KeyNotFound: return DiagnosticCode::UnknownReference;
    case XMLValid::NotSameAsFixedValue:
    case XMLValid::FixedDifferentFromActual: return DiagnosticCode::FixedValue;
    case XMLValid::NoAbstractInXsiType:
    case XMLValid::NoDirectUseAbstractElement:
    case XMLValid::NoUseAbstractType:
    case XMLValid::BadXsiType:
    case XMLValid::NonDerivedXsiType:
    case XMLValid::ElemNoSubforBlock:
    case XMLValid::TypeNoSubforBlock:
    case XMLValid::NillNotAllowed:
    case XMLValid::NilAttrNotEmpty: return DiagnosticCode::BadType;
    case XMLValid::ElementNotQualified:
    case XMLValid::ElementNotUnQualified:
    case XMLValid::WrongTargetNamespace: return DiagnosticCode::WrongNamespace;
    case XMLValid::VC_EntityNotFound: return DiagnosticCode::UnknownEntity;
    case XMLValid::DatatypeError:
    case XMLValid::DatatypeValidationFailure:
    case XMLValid::InvalidEmptyAttValue:
    case XMLValid::DoesNotMatchEnumList:
    case XMLValid::AttrValNotName:
    case XMLValid::IllegalXMLSpace: return DiagnosticCode::BadValue;
    default: return DiagnosticCode::Other;
    }
}
