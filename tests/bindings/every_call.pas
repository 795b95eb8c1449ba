{ Every call once, as Pascal sees it; every_call.txt has what it prints. }
program every_call;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}
{$APPTYPE CONSOLE}

uses
  lumo;

const
  TraceName: UTF8String = 'касса';
  Shift: UTF8String = 'Смена';
  Cashier: UTF8String = 'Кассир';
  Bill: UTF8String = 'СЧЁТ.JSN';
  NoBill: UTF8String = 'нет такого.JSN';
  Package: UTF8String = 'пакет';

var
  First, Header, Body, Footer, Detailed: UTF8String;

procedure Show(const Name, Value: UTF8String); overload;
begin
  if Value = '' then WriteLn(Name, ': -') else WriteLn(Name, ': ', Value);
end;

procedure Show(const Name: UTF8String; Value: LongInt); overload;
begin
  WriteLn(Name, ': ', Value);
end;

begin
  SetTextCodePage(Output, CP_UTF8);
  Show('lumoVersion', lumoVersion);
  Show('getTerminalId', getTerminalId);
  Show('getPingAddress', getPingAddress);
  Show('GetReportPtr', GetReportPtr);
  Show('LUMOInitExt', LUMOInitExt(TraceName));
  Show('LUMOInit', LUMOInit);
  Show('GetErrorMessage', GetErrorMessage(-501));
  Show('GetErrorMessage', GetErrorMessage(-7));
  Show('getTerminalId', getTerminalId);
  Show('getPingAddress', getPingAddress);
  Show('getPingAddress', getPingAddress);
  Show('getPingPort', getPingPort);
  Show('getPingAltAddress', getPingAltAddress);
  Show('getPingAltPort', getPingAltPort);
  Show('InitState', InitState);
  Show('LoadState', LoadState);
  Show('OpenShift', OpenShift(Shift));
  Show('OpenShift', OpenShift(''));
  Show('setOfflineState', setOfflineState(1));
  Show('getOfflineState', getOfflineState);
  Show('setOfflineState', setOfflineState(0));
  Show('setNeedUpdate', setNeedUpdate(1));
  Show('getNeedUpdate', getNeedUpdate);
  Show('setNeedUpdate', setNeedUpdate(0));
  Show('getRRN', getRRN);
  Show('getReceiptBody', getReceiptBody);
  Show('CreateTransaction', CreateTransaction('8765432187654321', Cashier));
  Show('getReceiptHeaderPtr', getReceiptHeaderPtr);
  Show('CloseTransaction', CloseTransaction);
  Show('CreateTransaction', CreateTransaction('1000000003', Cashier));
  Show('ActivationProc', ActivationProc('SIMPLE_ACTIVATION', '', 0, '', ''));
  Show('GetActivationAmount', GetActivationAmount);
  Show('DepositProc', DepositProc(100000));
  Show('BalanceProc', BalanceProc);
  Show('GetBalance', GetBalance);
  Show('CreateAmountBill', CreateAmountBill(10000, Bill));
  Show('PaymentProc', PaymentProc(1, Bill));
  First := getRRN;
  Show('GetEarnBonusAmount', GetEarnBonusAmount);
  Show('GetSpendBonusAmount', GetSpendBonusAmount);
  Show('GetDiscountAmount', GetDiscountAmount);
  Show('PaymentConfirmProc', PaymentConfirmProc(First));
  Show('CashBackProc', CashBackProc(First, ''));
  Show('GetCashBackResult', GetCashBackResult);
  Show('PaymentAndConfirmProc', PaymentAndConfirmProc(0, Bill));
  Show('PaymentProc', PaymentProc(0, NoBill));
  Show('PaymentCancelProc', PaymentCancelProc(First));
  Show('getResponseState', getResponseState);
  Show('getResponseStateCode', getResponseStateCode);
  Show('getResponseMessage', getResponseMessage);
  Show('LinkCardProc', LinkCardProc('1000000008'));
  Show('ExchangeProc', ExchangeProc('TOKEN7'));
  Show('lumoIsOffline', lumoIsOffline);
  Header := getReceiptHeaderPtr;
  Body := getReceiptBodyPtr;
  Footer := getReceiptFooterPtr;
  Show('getReceiptBody is getReceiptBodyPtr', Ord(getReceiptBody = Body));
  Show('CloseTransaction', CloseTransaction);
  Show('getReceiptBodyPtr', getReceiptBodyPtr);
  Show('first RRN', First);
  Show('slip', #10 + Header + Body + Footer);
  Show('SendOfflinePayments', SendOfflinePayments);
  Show('lumoOfflineCount', lumoOfflineCount);
  Show('lumoClearOffline', lumoClearOffline(5));
  Show('lumoClearOffline', lumoClearOffline(0));
  Show('GenerateSummaryReport', GenerateSummaryReport('9', '0'));
  Show('GenerateReport', Ord(GenerateReport('0', '9') > 0));
  Detailed := GetReportPtr;
  Show('GenerateSummaryReport', Ord(GenerateSummaryReport('0', '9') > 0));
  Show('the reports differ', Ord(GetReportPtr <> Detailed));
  Show('GetReportPtr', #10 + GetReportPtr);
  Show('RunUpdater', RunUpdater(Package));
  Show('CommitUpdates', CommitUpdates);
  Show('CloseShift', CloseShift);
  Show('OpenShift', OpenShift(''));
  Show('DllAttach', DllAttach(nil));
  Show('LUMOClean', LUMOClean);
end.
