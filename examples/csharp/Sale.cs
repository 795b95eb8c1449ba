// A cash register with the loyalty programme: sales, a server that goes away and comes back, answers that are lost, a
// shift's report.
//
//   Sale.exe FOLDER      the folder of the library file; the bills lie there too
//
// It reads what the cashier does, a line each, and ends its answer to each with the line "ready":
//   CARD          sells what is on the counter to the customer with this card
//   CARD spend    the same; the customer wants to pay with bonuses, as far as the programme lets her
//   send          sends what waits for the server
// The end of the input closes the shift.
using System;
using System.Globalization;
using System.IO;
using System.Text;

public static class Sale
{
    // The time as the library writes it, such as "2012-12-05T10:00:00Z".
    private static string Now()
    {
        return DateTime.UtcNow.ToString("yyyy'-'MM'-'dd'T'HH':'mm':'ss'Z'", CultureInfo.InvariantCulture);
    }

    private static void Say(string step, Lumo.Result result)
    {
        Console.WriteLine(step + ": " + (int)result + " " + Lumo.GetErrorMessage((int)result));
        if (result == Lumo.Result.ERR_SERVER_ERROR)
            Console.WriteLine("the server says " + Lumo.getResponseStateCode());
    }

    // The goods on the counter.
    private static bool WriteBill(string folder)
    {
        string bill = "{\"totalSum\":15000,\"orderLen\":2,\"billNum\":\"1\",\"billDate\":\"" + Now() + "\",\"partnerFee\":0," +
            "\"goodList\":{\"good\":[" +
            "{\"title\":\"Хлеб\",\"productCode\":\"001\",\"positionCost\":5000,\"orderNum\":1,\"cnt\":1}," +
            "{\"title\":\"Чай\",\"productCode\":\"002\",\"positionCost\":10000,\"orderNum\":2,\"cnt\":2}]}}";
        try
        {
            using (StreamWriter file = new StreamWriter(Path.Combine(folder, "BILL.JSN"), false, new UTF8Encoding(false)))
                file.Write(bill);
            return true;
        }
        catch (IOException)
        {
            return false;
        }
        catch (UnauthorizedAccessException)
        {
            return false;
        }
    }

    // Whether the server may have carried out what it was sent, and only its answer did not arrive.
    private static bool IsLost(Lumo.Result result)
    {
        return result == Lumo.Result.ERR_REQUEST_SEND || result == Lumo.Result.ERR_NO_RESPONSE ||
            result == Lumo.Result.ERR_JSON_SYNTAX || result == Lumo.Result.ERR_RESPONSE_STRUCTURE ||
            result == Lumo.Result.ERR_RESPONSE_TYPE || result == Lumo.Result.ERR_RESPONSE_CONTENT ||
            result == Lumo.Result.ERR_SERVER_FAILURE;
    }

    private static bool IsRefused(Lumo.Result result, string reason)
    {
        return result == Lumo.Result.ERR_SERVER_ERROR && Lumo.getResponseStateCode() == reason;
    }

    // Finds out whether a payment was made whose answer was lost. Whatever it was, afterwards it is not.
    private static void SettleLost(string rrn)
    {
        Lumo.Result result = Lumo.PaymentCancelProc(rrn);
        if (result == Lumo.Result.Success && Lumo.lumoIsOffline() == 1)
        {
            Console.WriteLine(rrn + ": its cancellation waits for the server; sell again");
        }
        else if (result == Lumo.Result.Success)
        {
            Console.WriteLine(rrn + " had been paid and is cancelled; sell again");
        }
        else if (IsRefused(result, "BILL_NOT_FOUND"))
        {
            Console.WriteLine(rrn + " was never paid; sell again");
        }
        else
        {
            Say("cancellation", result);
            Console.WriteLine(rrn + " may be paid: cancel it later; sell without the card");
        }
    }

    // Without it the bonuses are neither spent nor earned.
    private static void Confirm(string rrn)
    {
        Lumo.Result result = Lumo.PaymentConfirmProc(rrn);
        if (IsLost(result)) result = Lumo.PaymentConfirmProc(rrn);  // one that has arrived is refused the second time
        if (result == Lumo.Result.Success || IsRefused(result, "BILL_INCORRECT_STATE"))
        {
            Console.WriteLine(rrn + (Lumo.lumoIsOffline() == 1 ? " waits for the server" : " is confirmed"));
        }
        else
        {
            Say("confirmation", result);
            Console.WriteLine(rrn + " is not confirmed: confirm it later");
        }
    }

    // One sale in the current transaction. Goods can always be sold without the card.
    private static void Sell(string folder, bool spend)
    {
        string before = Lumo.getRRN();
        if (Lumo.BalanceProc() == Lumo.Result.Success)  // good to know, and no reason to stop
        {
            int balance = Lumo.GetBalance();
            Console.WriteLine("on the card: " + balance / 100 + "." + (balance % 100).ToString("00"));
        }
        if (Lumo.getRRN() == before)
        {
            Console.WriteLine("sell without the card: the server was never met or the clock is behind, " +
                "and would refuse the sale for ever");
            return;
        }
        if (!WriteBill(folder))
        {
            Console.WriteLine("sell without the card: the bill cannot be written");
            return;
        }
        // The first argument says whether bonuses are spent; how many is the server's to decide.
        Lumo.Result result = Lumo.PaymentProc(spend ? 1 : 0, "BILL.JSN");
        string rrn = Lumo.getRRN();
        if (IsLost(result))
        {
            SettleLost(rrn);
        }
        else if (result == Lumo.Result.Success || result == Lumo.Result.ERR_BILL_OPEN)
        {
            // Paid; at worst the bill could not be written back.
            Console.Write(Lumo.getReceiptHeaderPtr() + Lumo.getReceiptBodyPtr() + Lumo.getReceiptFooterPtr());
            Confirm(rrn);
        }
        else
        {
            Say("payment", result);
            Console.WriteLine("sell without the card");
        }
    }

    private static void SendWaiting()
    {
        int waiting = Lumo.lumoOfflineCount();
        int sent = Lumo.SendOfflinePayments();
        Console.WriteLine("sent " + sent + " of " + waiting);
        // OFFLINE keeps the records that failed. When none did, it keeps them all, until it is cleared.
        if (sent == waiting && Lumo.lumoClearOffline(sent) != Lumo.Result.Success)
            Console.WriteLine("OFFLINE could not be cleared");
    }

    public static int Main(string[] arguments)
    {
        if (arguments.Length != 1)
        {
            Console.WriteLine("usage: Sale.exe FOLDER");
            return 2;
        }
        Console.OutputEncoding = new UTF8Encoding(false);
        Lumo.Result result = Lumo.LUMOInit();
        if (result != Lumo.Result.Success)
        {
            Say("start", result);
            return 1;
        }
        string opened = Now();
        result = Lumo.OpenShift("1");
        if (result != Lumo.Result.Success && result != Lumo.Result.ERR_SHIFT_ALREADY_OPEN)
        {
            Say("shift", result);
            return 1;
        }

        Console.WriteLine("ready");
        for (string line = Console.ReadLine(); line != null; line = Console.ReadLine())
        {
            string[] words = line.Trim().Split(' ');
            if (words[0] == "send")
            {
                SendWaiting();
            }
            else if (words[0] != "")
            {
                result = Lumo.CreateTransaction(words[0], "7");
                if (result == Lumo.Result.Success)
                {
                    Sell(arguments[0], words.Length > 1 && words[1] == "spend");
                    Lumo.CloseTransaction();
                }
                else
                {
                    Say("transaction", result);
                }
            }
            Console.WriteLine("ready");
        }

        // Report bounds are texts: the minute stands before each of its seconds, "9" behind all dates.
        if (Lumo.GenerateSummaryReport(opened.Substring(0, 16), "9") > 0) Console.Write(Lumo.GetReportPtr());
        result = Lumo.CloseShift();
        if (result != Lumo.Result.Success) Say("shift", result);
        return (int)Lumo.LUMOClean();
    }
}
