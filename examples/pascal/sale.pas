{ A cash register with the loyalty programme: sales, a server that goes away and comes back, answers that are lost, a
  shift's report.

    sale FOLDER      the folder of the library file; the bills lie there too

  It reads what the cashier does, a line each, and ends its answer to each with the line "ready":
    CARD          sells what is on the counter to the customer with this card
    CARD spend    the same; the customer wants to pay with bonuses, as far as the programme lets her
    send          sends what waits for the server
  The end of the input closes the shift. }
program sale;

{$IFDEF FPC}{$MODE DELPHI}{$ENDIF}
{$APPTYPE CONSOLE}

uses
{$IFNDEF UNIX}
  Windows,
{$ENDIF}
  SysUtils, lumo;

const
  Bread: UTF8String = 'Хлеб';
  Tea: UTF8String = 'Чай';

{ The time as the library writes it, such as "2012-12-05T10:00:00Z". }
function UtcNow: UTF8String;
var
  Time: TDateTime;
{$IFNDEF UNIX}
  Fields: TSystemTime;
{$ENDIF}
begin
{$IFDEF UNIX}
  Time := Now + GetLocalTimeOffset / (24 * 60);
{$ELSE}
  GetSystemTime(Fields);
  Time := SystemTimeToDateTime(Fields);
{$ENDIF}
  Result := UTF8String(FormatDateTime('yyyy"-"mm"-"dd"T"hh":"nn":"ss"Z"', Time));
end;

procedure Say(const Step: UTF8String; Code: Integer);
begin
  WriteLn(Step, ': ', Code, ' ', GetErrorMessage(Code));
  if Code = ERR_SERVER_ERROR then WriteLn('the server says ', getResponseStateCode);
end;

{ The goods on the counter. }
function WriteBill(const Folder: string): Boolean;
var
  Bill: file;
  Text: UTF8String;
begin
  Text := '{"totalSum":15000,"orderLen":2,"billNum":"1","billDate":"' + UtcNow + '","partnerFee":0,"goodList":{"good":[' +
    '{"title":"' + Bread + '","productCode":"001","positionCost":5000,"orderNum":1,"cnt":1},' +
    '{"title":"' + Tea + '","productCode":"002","positionCost":10000,"orderNum":2,"cnt":2}]}}';
  AssignFile(Bill, Folder + '/BILL.JSN');
{$I-}
  Rewrite(Bill, 1);
  Result := IOResult = 0;
  if not Result then Exit;
  BlockWrite(Bill, Text[1], Length(Text));
  Result := IOResult = 0;
  CloseFile(Bill);
  Result := (IOResult = 0) and Result;
{$I+}
end;

{ Whether the server may have carried out what it was sent, and only its answer did not arrive. }
function IsLost(Code: Integer): Boolean;
begin
  case Code of
    ERR_REQUEST_SEND, ERR_NO_RESPONSE, ERR_JSON_SYNTAX, ERR_RESPONSE_STRUCTURE, ERR_RESPONSE_TYPE, ERR_RESPONSE_CONTENT,
      ERR_SERVER_FAILURE: Result := True;
  else
    Result := False;
  end;
end;

function IsRefused(Code: Integer; const Reason: UTF8String): Boolean;
begin
  Result := (Code = ERR_SERVER_ERROR) and (getResponseStateCode = Reason);
end;

{ Finds out whether a payment was made whose answer was lost. Whatever it was, afterwards it is not. }
procedure SettleLost(const Rrn: UTF8String);
var
  Code: Integer;
begin
  Code := PaymentCancelProc(Rrn);
  if (Code = 0) and (lumoIsOffline = 1) then
    WriteLn(Rrn, ': its cancellation waits for the server; sell again')
  else if Code = 0 then
    WriteLn(Rrn, ' had been paid and is cancelled; sell again')
  else if IsRefused(Code, 'BILL_NOT_FOUND') then
    WriteLn(Rrn, ' was never paid; sell again')
  else
  begin
    Say('cancellation', Code);
    WriteLn(Rrn, ' may be paid: cancel it later; sell without the card');
  end;
end;

{ Without it the bonuses are neither spent nor earned. }
procedure Confirm(const Rrn: UTF8String);
var
  Code: Integer;
begin
  Code := PaymentConfirmProc(Rrn);
  if IsLost(Code) then Code := PaymentConfirmProc(Rrn);  { one that has arrived is refused the second time }
  if (Code <> 0) and not IsRefused(Code, 'BILL_INCORRECT_STATE') then
  begin
    Say('confirmation', Code);
    WriteLn(Rrn, ' is not confirmed: confirm it later');
  end
  else if lumoIsOffline = 1 then
    WriteLn(Rrn, ' waits for the server')
  else
    WriteLn(Rrn, ' is confirmed');
end;

{ One sale in the current transaction. Goods can always be sold without the card. }
procedure Sell(const Folder: string; Spend: Integer);
var
  Before, Rrn: UTF8String;
  Code: Integer;
begin
  Before := getRRN;
  if BalanceProc = 0 then  { good to know, and no reason to stop }
    WriteLn(Format('on the card: %d.%.2d', [GetBalance div 100, GetBalance mod 100]));
  if getRRN = Before then
  begin
    WriteLn('sell without the card: the server was never met or the clock is behind, and would refuse the sale for ever');
    Exit;
  end;
  if not WriteBill(Folder) then
  begin
    WriteLn('sell without the card: the bill cannot be written');
    Exit;
  end;
  Code := PaymentProc(Spend, 'BILL.JSN');  { Spend says whether; how much is the server's to decide }
  Rrn := getRRN;
  if IsLost(Code) then
    SettleLost(Rrn)
  else if (Code = 0) or (Code = ERR_BILL_OPEN) then  { paid; at worst the bill could not be written back }
  begin
    Write(getReceiptHeaderPtr, getReceiptBodyPtr, getReceiptFooterPtr);
    Confirm(Rrn);
  end
  else
  begin
    Say('payment', Code);
    WriteLn('sell without the card');
  end;
end;

procedure SendWaiting;
var
  Waiting, Sent: Integer;
begin
  Waiting := lumoOfflineCount;
  Sent := SendOfflinePayments;
  WriteLn('sent ', Sent, ' of ', Waiting);
  { OFFLINE keeps the records that failed. When none did, it keeps them all, until it is cleared. }
  if (Sent = Waiting) and (lumoClearOffline(Sent) <> 0) then WriteLn('OFFLINE could not be cleared');
end;

procedure Ready;
begin
  WriteLn('ready');
  Flush(Output);
end;

var
  Opened: UTF8String;
  Line, Card: string;
  Code, Blank: Integer;
begin
  if ParamCount <> 1 then
  begin
    WriteLn('usage: sale FOLDER');
    Halt(2);
  end;
{$IFDEF MSWINDOWS}
  SetConsoleOutputCP(CP_UTF8);
{$ENDIF}
  SetTextCodePage(Output, CP_UTF8);
  Code := LUMOInit;
  if Code <> 0 then
  begin
    Say('start', Code);
    Halt(1);
  end;
  Opened := UtcNow;
  Code := OpenShift('1');
  if (Code <> 0) and (Code <> ERR_SHIFT_ALREADY_OPEN) then
  begin
    Say('shift', Code);
    Halt(1);
  end;

  Ready;
  while not Eof do
  begin
    ReadLn(Line);
    Blank := Pos(' ', Line + ' ');
    Card := Copy(Line, 1, Blank - 1);
    if Card = 'send' then
      SendWaiting
    else if Card <> '' then
    begin
      Code := CreateTransaction(UTF8String(Card), '7');
      if Code = 0 then
      begin
        Sell(ParamStr(1), Ord(Copy(Line, Blank + 1, 5) = 'spend'));
        CloseTransaction;
      end
      else
        Say('transaction', Code);
    end;
    Ready;
  end;

  { Report bounds are texts: the minute stands before each of its seconds, "9" behind all dates. }
  if GenerateSummaryReport(Copy(Opened, 1, 16), '9') > 0 then Write(GetReportPtr);
  Code := CloseShift;
  if Code <> 0 then Say('shift', Code);
  LUMOClean;
end.
